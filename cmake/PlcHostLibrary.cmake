# The host as integrators install it: the libraries plc_host and, for those who use Qt Network,
# plc_host_tcp, each shared and static. The programs here link the static ones.

# Every name carries the Qt major version, as that of the driver does.
set(PLC_HOST_NAME plc_host_qt${PLC_QT_MAJOR})
set(PLC_HOST_TCP_NAME plc_host_tcp_qt${PLC_QT_MAJOR})
# Its binary interface is that of C++ classes with all they hold, and changes with the minor version:
# programs find the one that they were built with, or none. Qt's and the compiler's part in it is theirs.
set(PLC_HOST_SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})

# plc_host_library(<component> NAME <file name> PARTS <target>... LINKS <target>...)
#
# Makes plc_<component>_shared and plc_<component>_static of the objects of the parts.
function(plc_host_library component)
  cmake_parse_arguments(PARSE_ARGV 1 library "" "NAME" "PARTS;LINKS")
  set(objects "")
  foreach(part IN LISTS library_PARTS)
    list(APPEND objects $<TARGET_OBJECTS:${part}>)
  endforeach()
  foreach(kind shared static)
    string(TOUPPER ${kind} type)
    set(target plc_${component}_${kind})
    set(exported ${component})
    if(kind STREQUAL static)
      set(exported ${component}_static)
    endif()
    add_library(${target} ${type} ${objects})
    set_target_properties(${target} PROPERTIES
      OUTPUT_NAME ${library_NAME}
      LINKER_LANGUAGE CXX
      EXPORT_NAME ${exported})
    target_include_directories(${target} INTERFACE
      $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
      $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/${PLC_HOST_NAME}>)
    target_compile_features(${target} INTERFACE cxx_std_17)
    foreach(link IN LISTS library_LINKS)
      if(TARGET ${link}_${kind})
        set(link ${link}_${kind})
      endif()
      target_link_libraries(${target} PUBLIC ${link})
    endforeach()
  endforeach()
  # Its warnings are for its sources, which are compiled in the parts.
  target_link_libraries(plc_${component}_shared PRIVATE plc_options)
  set_target_properties(plc_${component}_shared PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PLC_HOST_SOVERSION}
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/host/exported.map)
  target_link_options(plc_${component}_shared PRIVATE
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/host/exported.map)
  if(NOT PLC_SANITIZE)
    target_link_options(plc_${component}_shared PRIVATE -Wl,-z,defs)
  endif()
endfunction()

plc_host_library(host NAME ${PLC_HOST_NAME}
  PARTS plc_values plc_project plc_host
  LINKS plc_qt_core ${CMAKE_DL_LIBS})
plc_host_library(tcp NAME ${PLC_HOST_TCP_NAME}
  PARTS plc_streams plc_capture plc_host_tcp
  LINKS plc_host plc_qt_network)
