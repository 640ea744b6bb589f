# Target `docs`: the reference of the driver's interface as HTML in reference/html, and of the host
# library in reference/html/host. Doxygen's warnings are errors.

find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  message(STATUS "doxygen is not installed: there is no target docs")
  return()
endif()

configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in Doxyfile @ONLY)
set(plc_reference_command Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile)
set(plc_all_reference_commands COMMAND ${plc_reference_command})
if(PLC_BUILD_TOOLS)
  file(STRINGS ${PROJECT_SOURCE_DIR}/host/installed_headers.txt plc_host_headers)
  file(STRINGS ${PROJECT_SOURCE_DIR}/host/tcp/installed_headers.txt plc_tcp_headers)
  list(TRANSFORM plc_host_headers PREPEND ${PROJECT_SOURCE_DIR}/)
  list(TRANSFORM plc_tcp_headers PREPEND ${PROJECT_SOURCE_DIR}/)
  list(REMOVE_ITEM plc_host_headers ${PROJECT_SOURCE_DIR}/driver/plc_driver.h)
  list(JOIN plc_host_headers " " plc_host_reference_input)
  list(JOIN plc_tcp_headers " " plc_tcp_reference_input)
  string(APPEND plc_host_reference_input " " ${plc_tcp_reference_input})
  configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile_host.in Doxyfile_host @ONLY)
  set(plc_host_reference_command Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile_host)
  list(APPEND plc_all_reference_commands COMMAND ${plc_host_reference_command})
endif()
add_custom_target(docs
  ${plc_all_reference_commands}
  COMMENT "Writing ${PROJECT_BINARY_DIR}/reference/html/index.html"
  VERBATIM)
if(PLC_BUILD_TESTS)
  add_test(NAME reference.IsCompleteAndWithoutWarnings COMMAND ${plc_reference_command})
  if(PLC_BUILD_TOOLS)
    add_test(NAME reference.OfTheHostIsWithoutWarnings COMMAND ${plc_host_reference_command})
    # The folder of the one is in that of the other.
    set_tests_properties(reference.OfTheHostIsWithoutWarnings PROPERTIES
      DEPENDS reference.IsCompleteAndWithoutWarnings)
  endif()
endif()
install(DIRECTORY ${PROJECT_BINARY_DIR}/reference/html
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/reference COMPONENT development OPTIONAL)
