# Chooses the Qt major version and provides the targets plc_qt_core and plc_qt_network, and the name
# of the driver library for this Qt, PLC_DRIVER_NAME.
#
# PLC_QT_MAJOR: 5 or 6, found as installed (5 preferred where both are); or 4, for hosts that still
# use Qt 4.8, with PLC_QT4_INCLUDE_DIR (the folder that holds QtCore/) and PLC_QT4_CORE_LIBRARY
# given. With Qt 4 the library and its tests are built; the tools need a newer one.

set(PLC_QT_MAJOR "" CACHE STRING "Qt major version: 4, 5 or 6; empty: 5 if installed, else 6")

if(PLC_QT_MAJOR STREQUAL "")
  find_package(Qt5Core 5.15 QUIET CONFIG)
  if(Qt5Core_FOUND)
    set(PLC_QT_MAJOR 5)
  else()
    set(PLC_QT_MAJOR 6)
  endif()
endif()

add_library(plc_qt_core INTERFACE)
add_library(plc_qt_network INTERFACE)
if(PLC_QT_MAJOR EQUAL 4)
  set(PLC_QT4_INCLUDE_DIR "" CACHE PATH "Folder that holds Qt 4.8's QtCore/")
  set(PLC_QT4_CORE_LIBRARY "" CACHE FILEPATH "Qt 4.8's QtCore library")
  if(NOT EXISTS "${PLC_QT4_INCLUDE_DIR}/QtCore/qglobal.h" OR NOT EXISTS "${PLC_QT4_CORE_LIBRARY}")
    message(FATAL_ERROR "Qt 4: set PLC_QT4_INCLUDE_DIR to the folder that holds QtCore/ and "
                        "PLC_QT4_CORE_LIBRARY to the QtCore library")
  endif()
  if(PLC_BUILD_TOOLS OR PLC_BUILD_BENCHMARKS)
    message(FATAL_ERROR "Qt 4: the library and its tests are built; set PLC_BUILD_TOOLS to OFF")
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # g++ 12 takes the end of a QVector for a place before its first element.
    add_compile_options(-Wno-array-bounds)
  endif()
  target_include_directories(plc_qt_core SYSTEM INTERFACE
    ${PLC_QT4_INCLUDE_DIR} ${PLC_QT4_INCLUDE_DIR}/QtCore)
  target_link_libraries(plc_qt_core INTERFACE ${PLC_QT4_CORE_LIBRARY})
elseif(PLC_QT_MAJOR EQUAL 5 OR PLC_QT_MAJOR EQUAL 6)
  if(PLC_QT_MAJOR EQUAL 5)
    set(plc_qt_minimum 5.15)
  else()
    set(plc_qt_minimum 6.2)
  endif()
  find_package(Qt${PLC_QT_MAJOR} ${plc_qt_minimum} REQUIRED COMPONENTS Core)
  target_link_libraries(plc_qt_core INTERFACE Qt${PLC_QT_MAJOR}::Core)
  if(PLC_BUILD_TOOLS)
    find_package(Qt${PLC_QT_MAJOR} ${plc_qt_minimum} REQUIRED COMPONENTS Network)
    target_link_libraries(plc_qt_network INTERFACE Qt${PLC_QT_MAJOR}::Network plc_qt_core)
  endif()
else()
  message(FATAL_ERROR "PLC_QT_MAJOR is ${PLC_QT_MAJOR}; 4, 5 or 6 is expected")
endif()

# The library is C++11 source; Qt 6's own headers need C++17.
if(PLC_QT_MAJOR EQUAL 6)
  set(PLC_LIBRARY_STANDARD 17)
else()
  set(PLC_LIBRARY_STANDARD 11)
endif()
set(PLC_TOOLS_STANDARD 17)

# Under its name a library is installed, linked and loaded. Host and driver share Qt's value types:
# the libraries for several Qts stand side by side, and none is taken for another.
set(PLC_DRIVER_NAME plc_driver_qt${PLC_QT_MAJOR})
