# Target `docs`: the reference of the host interface as HTML in reference/html. Doxygen's warnings
# are errors.

find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  message(STATUS "doxygen is not installed: there is no target docs")
  return()
endif()

configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in Doxyfile @ONLY)
set(plc_reference_command Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile)
add_custom_target(docs
  COMMAND ${plc_reference_command}
  COMMENT "Writing ${PROJECT_BINARY_DIR}/reference/html/index.html"
  VERBATIM)
if(PLC_BUILD_TESTS)
  add_test(NAME reference.IsCompleteAndWithoutWarnings COMMAND ${plc_reference_command})
endif()
install(DIRECTORY ${PROJECT_BINARY_DIR}/reference/html
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/reference COMPONENT development OPTIONAL)
