# Debian packages: the preset `packages`, then `cpack` in its build folder. Debian's rules for names
# and places are followed; tools/test_packages builds, checks, installs, uses and removes them.

set(PLC_PACKAGE_CONTACT "PLC driver maintainers <maintainers@plc-driver.invalid>" CACHE STRING
  "Name and address of who builds the packages")
set(PLC_PACKAGE_REVISION 1 CACHE STRING "Debian revision of the packages")

# The package of a library goes by its SONAME.
set(plc_runtime_package libplc-driver-qt${PLC_QT_MAJOR}-${PROJECT_VERSION_MAJOR})
set(plc_development_package libplc-driver-qt${PLC_QT_MAJOR}-dev)
set(plc_tools_package plc-tools)
set(plc_gateway_package plc-gateway)
set(plc_panel_package plc-panel)
set(plc_host_package libplc-host-qt${PLC_QT_MAJOR}-${PLC_HOST_SOVERSION})
set(plc_tcp_package libplc-host-tcp-qt${PLC_QT_MAJOR}-${PLC_HOST_SOVERSION})
set(plc_host_development_package libplc-host-qt${PLC_QT_MAJOR}-dev)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME plc-driver)
set(CPACK_PACKAGE_VENDOR "")
set(CPACK_PACKAGE_CONTACT "${PLC_PACKAGE_CONTACT}")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/compress.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(PLC_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools host tcp host_development)
endif()
foreach(component gateway panel)
  if(TARGET plc-${component})
    list(APPEND CPACK_COMPONENTS_ALL ${component})
  endif()
endforeach()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${PLC_PACKAGE_REVISION})
set(CPACK_DEBIAN_PACKAGE_SOURCE plc-driver)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(PLC_BUILD_TOOLS)
  # The library of the sessions over TCP needs that of the host, which no installed package has yet.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
endif()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(plc_package_version ${PROJECT_VERSION}-${PLC_PACKAGE_REVISION})

# The package's own first line is its summary; CPack would put the project's before it.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(plc_about "\
The driver exchanges process data with PLCs of the ABB AC500 family in the
CODESYS block protocol over TCP: it logs in, groups reads, writes, and gives
and takes values by label. It holds no socket, timer or thread; the program
that loads it does.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${plc_runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "PLC communication driver for Qt ${PLC_QT_MAJOR}
${plc_about}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${plc_development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "PLC communication driver for Qt ${PLC_QT_MAJOR} (development files)
${plc_about}

This package holds the header, the CMake package, the pkg-config file and the
documents.")
if(PLC_QT_MAJOR EQUAL 6)
  set(plc_qt_development_package qt6-base-dev)
elseif(PLC_QT_MAJOR EQUAL 4)
  set(plc_qt_development_package libqt4-dev)
else()
  set(plc_qt_development_package qtbase5-dev)
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${plc_runtime_package} (= ${plc_package_version}), ${plc_qt_development_package}")

# The host loads the driver's library when it runs: nothing in the files says so.
set(plc_about_host "\
The host is what a program needs around the driver to exchange values with
PLCs: sessions, cyclic reads with the age of each value, writes with their
outcomes, and symbols.")
set(CPACK_DEBIAN_HOST_PACKAGE_NAME ${plc_host_package})
set(CPACK_DEBIAN_HOST_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_HOST_DESCRIPTION "host around the PLC communication driver for Qt ${PLC_QT_MAJOR}
${plc_about_host}")
set(CPACK_DEBIAN_HOST_PACKAGE_RECOMMENDS "${plc_runtime_package} (= ${plc_package_version})")
set(CPACK_DEBIAN_HOST_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_DEBIAN_TCP_PACKAGE_NAME ${plc_tcp_package})
set(CPACK_DEBIAN_TCP_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_TCP_DESCRIPTION "PLC sessions over TCP on the event loop of Qt ${PLC_QT_MAJOR}
${plc_about_host}

This library runs its sessions over TCP on the event loop of Qt.")
set(CPACK_DEBIAN_TCP_PACKAGE_DEPENDS "${plc_host_package} (= ${plc_package_version})")
set(CPACK_DEBIAN_TCP_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_DEBIAN_HOST_DEVELOPMENT_PACKAGE_NAME ${plc_host_development_package})
set(CPACK_DEBIAN_HOST_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_HOST_DEVELOPMENT_DESCRIPTION "host around the PLC communication driver for Qt ${PLC_QT_MAJOR} (development files)
${plc_about_host}

This package holds the headers, the static libraries and the pkg-config files.")
set(CPACK_DEBIAN_HOST_DEVELOPMENT_PACKAGE_DEPENDS
  "${plc_host_package} (= ${plc_package_version}), ${plc_tcp_package} (= ${plc_package_version}), ${plc_development_package} (= ${plc_package_version})")

# The programs load the library when they run: nothing in the files says so.
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${plc_tools_package})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "command line and simulator for PLC communication
${plc_about}

This package holds plc, which reads, writes and shows the variables of a PLC;
plc-simulator, which plays one; a demo plant; and a dissector for Wireshark.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${plc_runtime_package} (= ${plc_package_version})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "bash-completion, wireshark | tshark")
set(CPACK_DEBIAN_GATEWAY_PACKAGE_NAME ${plc_gateway_package})
set(CPACK_DEBIAN_GATEWAY_PACKAGE_SECTION net)
set(CPACK_DEBIAN_GATEWAY_DESCRIPTION "gateway from PLCs to MQTT brokers
${plc_about}

This package holds plc-gateway, which publishes the values of PLCs by MQTT, as
Sparkplug B or as JSON, and its service for systemd.")
set(CPACK_DEBIAN_GATEWAY_PACKAGE_DEPENDS "${plc_runtime_package} (= ${plc_package_version})")
set(CPACK_DEBIAN_GATEWAY_PACKAGE_SUGGESTS "mosquitto, plc-tools, prometheus")
set(CPACK_DEBIAN_PANEL_PACKAGE_NAME ${plc_panel_package})
set(CPACK_DEBIAN_PANEL_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PANEL_DESCRIPTION "values of PLCs in the browser, with a recorder
${plc_about}

This package holds plc-panel, which shows the values of PLCs in the browser,
live and back in time, writes them with confirmation, watches for alarms and
serves programs over HTTP; its service for systemd; and a client for Python.")
set(CPACK_DEBIAN_PANEL_PACKAGE_DEPENDS "${plc_runtime_package} (= ${plc_package_version})")
set(CPACK_DEBIAN_PANEL_PACKAGE_SUGGESTS "plc-tools, python3")

# What only the packages hold: the papers that Debian asks for, and the dissector where Wireshark
# looks for it.
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md plc_release_heading
  REGEX "^## ${PROJECT_VERSION} \\(" LIMIT_COUNT 1)
string(REGEX MATCH "[0-9]+-[0-9]+-[0-9]+" plc_release_day "${plc_release_heading}")
if(NOT plc_release_day)
  message(FATAL_ERROR "CHANGELOG.md has no heading '## ${PROJECT_VERSION} (YYYY-MM-DD)'")
endif()
string(SUBSTRING ${plc_release_day} 0 4 plc_release_year)
execute_process(COMMAND date --utc --rfc-email --date ${plc_release_day}
  OUTPUT_VARIABLE plc_release_date OUTPUT_STRIP_TRAILING_WHITESPACE)
foreach(file copyright changelog.Debian)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/${file}.in debian/${file} @ONLY)
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md debian/changelog COPYONLY)
# The panel's program holds the packages of its page.
file(READ ${PROJECT_BINARY_DIR}/debian/copyright plc_copyright)
file(READ ${CMAKE_CURRENT_LIST_DIR}/debian/copyright-panel plc_copyright_of_page)
file(WRITE ${PROJECT_BINARY_DIR}/debian/panel/copyright "${plc_copyright}${plc_copyright_of_page}")
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(plc_copyright_file ${PROJECT_BINARY_DIR}/debian/copyright)
  if(component STREQUAL panel)
    set(plc_copyright_file ${PROJECT_BINARY_DIR}/debian/panel/copyright)
  endif()
  install(FILES
    ${plc_copyright_file}
    ${PROJECT_BINARY_DIR}/debian/changelog
    ${PROJECT_BINARY_DIR}/debian/changelog.Debian
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${plc_${component}_package}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
if(PLC_BUILD_TOOLS)
  set(plc_wireshark_dir ${CMAKE_INSTALL_LIBDIR}/wireshark/plugins)
  file(RELATIVE_PATH plc_dissector /${plc_wireshark_dir} /${plc_data_dir}/wireshark/plc_block.lua)
  file(CREATE_LINK ${plc_dissector} ${PROJECT_BINARY_DIR}/debian/plc_block.lua SYMBOLIC)
  install(FILES ${PROJECT_BINARY_DIR}/debian/plc_block.lua
    DESTINATION ${plc_wireshark_dir} COMPONENT tools EXCLUDE_FROM_ALL)
endif()

include(CPack)
