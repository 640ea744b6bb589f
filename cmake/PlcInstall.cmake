# What `cmake --install` puts where, in components: runtime (the driver's shared library), development
# (its header, CMake package, pkg-config file, documents), host and tcp (the shared libraries of the
# host), host_development (their headers and static libraries), tools (programs, manual pages, demo),
# gateway (plc-gateway, its manual page and its service) and panel (the same of plc-panel).

include(CMakePackageConfigHelpers)

set(plc_data_dir ${CMAKE_INSTALL_DATADIR}/plc-driver)
# Every name carries the Qt major version: installations for several Qts go to one prefix.
set(plc_cmake_package PlcDriverQt${PLC_QT_MAJOR})
set(plc_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${plc_cmake_package})
set(plc_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/${PLC_DRIVER_NAME})

# Hosts compile the public header, whose records have member initialisers.
target_compile_features(plc_driver INTERFACE cxx_std_${PLC_LIBRARY_STANDARD})
set_target_properties(plc_qt_core PROPERTIES EXPORT_NAME qt_core)

install(TARGETS plc_driver plc_qt_core EXPORT ${plc_cmake_package}Targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  PUBLIC_HEADER DESTINATION ${plc_include_dir} COMPONENT development)

# The host library, in components of its own.
if(PLC_BUILD_TOOLS)
  set(plc_host_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/${PLC_HOST_NAME})
  set_target_properties(plc_qt_network PROPERTIES EXPORT_NAME qt_network)
  foreach(component host tcp)
    set(plc_exported plc_${component}_shared plc_${component}_static)
    set(plc_header_list ${PROJECT_SOURCE_DIR}/host/installed_headers.txt)
    if(component STREQUAL tcp)
      list(APPEND plc_exported plc_qt_network)
      set(plc_header_list ${PROJECT_SOURCE_DIR}/host/tcp/installed_headers.txt)
    endif()
    install(TARGETS ${plc_exported} EXPORT ${plc_cmake_package}-${component}Targets
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT ${component} NAMELINK_COMPONENT host_development
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT host_development)
    install(EXPORT ${plc_cmake_package}-${component}Targets NAMESPACE PlcDriver::
      DESTINATION ${plc_package_dir} COMPONENT host_development)
    # Each where its path from the root of the sources says.
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${plc_header_list})
    file(STRINGS ${plc_header_list} plc_headers)
    foreach(header IN LISTS plc_headers)
      get_filename_component(plc_header_dir ${header} DIRECTORY)
      install(FILES ${header} DESTINATION ${plc_host_include_dir}/${plc_header_dir}
        COMPONENT host_development)
    endforeach()
  endforeach()
endif()

# The CMake package. Hosts share Qt's value types with the driver: it asks for the same Qt.
if(PLC_QT_MAJOR EQUAL 4)
  set(plc_qt_dependency "")
else()
  string(REGEX MATCH "^[0-9]+\\.[0-9]+" plc_qt_built_with "${Qt${PLC_QT_MAJOR}Core_VERSION}")
  set(plc_qt_dependency "find_dependency(Qt${PLC_QT_MAJOR} ${plc_qt_built_with} COMPONENTS Core)")
endif()
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/PlcDriverConfig.cmake.in ${plc_cmake_package}Config.cmake
  INSTALL_DESTINATION ${plc_package_dir}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${plc_cmake_package}ConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(EXPORT ${plc_cmake_package}Targets NAMESPACE PlcDriver::
  DESTINATION ${plc_package_dir} COMPONENT development)
install(FILES
  ${PROJECT_BINARY_DIR}/${plc_cmake_package}Config.cmake
  ${PROJECT_BINARY_DIR}/${plc_cmake_package}ConfigVersion.cmake
  DESTINATION ${plc_package_dir} COMPONENT development)

# The pkg-config file finds the prefix from its own place, so that an installation can be moved.
set(plc_pkg_config_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH plc_prefix_from_pkg_config
  ${CMAKE_INSTALL_PREFIX}/${plc_pkg_config_dir} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" plc_prefix_from_pkg_config "${plc_prefix_from_pkg_config}")
if(PLC_QT_MAJOR EQUAL 4)
  set(plc_pkg_config_requires "QtCore")
else()
  set(plc_pkg_config_requires "Qt${PLC_QT_MAJOR}Core >= ${plc_qt_built_with}")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/plc_driver.pc.in ${PLC_DRIVER_NAME}.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/${PLC_DRIVER_NAME}.pc
  DESTINATION ${plc_pkg_config_dir} COMPONENT development)
if(PLC_BUILD_TOOLS)
  foreach(file plc_host plc_host_tcp)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${file}.pc.in ${file}_qt${PLC_QT_MAJOR}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${file}_qt${PLC_QT_MAJOR}.pc
      DESTINATION ${plc_pkg_config_dir} COMPONENT host_development)
  endforeach()
endif()

# In the folders of the sources, so that the links between the documents lead somewhere.
install(FILES CHANGELOG.md CONTRIBUTING.md README.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development OPTIONAL)
install(DIRECTORY docs
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development
  FILES_MATCHING
  PATTERN man EXCLUDE
  PATTERN "*.md" PATTERN "*.json" PATTERN "*.svg" PATTERN "*.png" PATTERN "*.h" PATTERN "*.cpp" PATTERN "*.py")

if(PLC_BUILD_TOOLS)
  foreach(tool plc plc-simulator plc-gateway plc-panel)
    set(plc_component tools)
    if(tool MATCHES "^plc-(gateway|panel)$")
      set(plc_component ${CMAKE_MATCH_1})
    endif()
    if(TARGET ${tool})
      install(TARGETS ${tool}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${plc_component})
      install(FILES ${PROJECT_BINARY_DIR}/docs/man/${tool}.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${plc_component})
      install(FILES ${PROJECT_BINARY_DIR}/tools/completion/${tool}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        COMPONENT ${plc_component})
    endif()
  endforeach()
  if(TARGET plc-gateway)
    # Where systemd looks, whatever folder the processor's libraries have.
    install(FILES ${PROJECT_BINARY_DIR}/gateway/plc-gateway@.service
      DESTINATION lib/systemd/system COMPONENT gateway)
    # Where the examples look for their schemas.
    install(FILES docs/gateway-config.schema.json docs/project-file.schema.json
      DESTINATION ${plc_data_dir} COMPONENT gateway)
    install(FILES docs/examples/gateway.json docs/examples/tank.json
      DESTINATION ${plc_data_dir}/gateway COMPONENT gateway)
  endif()
  if(TARGET plc-panel)
    install(FILES ${PROJECT_BINARY_DIR}/panel/plc-panel@.service
      DESTINATION lib/systemd/system COMPONENT panel)
    install(FILES docs/panel-config.schema.json DESTINATION ${plc_data_dir} COMPONENT panel)
    install(FILES docs/examples/panel.json docs/examples/tank.json
      DESTINATION ${plc_data_dir}/panel COMPONENT panel)
    install(PROGRAMS docs/examples/plc_panel_client.py
      DESTINATION ${plc_data_dir}/panel COMPONENT panel)
  endif()
  install(DIRECTORY simulator/demo/ DESTINATION ${plc_data_dir}/demo COMPONENT tools)
  install(FILES tools/wireshark/plc_block.lua tools/wireshark/README.md
    DESTINATION ${plc_data_dir}/wireshark COMPONENT tools)
endif()
include(PlcPackages)
