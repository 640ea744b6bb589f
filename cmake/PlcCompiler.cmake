# Warnings, sanitizers, coverage and ccache for every target that links plc_options.

set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(PLC_CCACHE ccache)
if(PLC_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${PLC_CCACHE})
endif()

add_library(plc_options INTERFACE)
target_compile_options(plc_options INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Wpedantic -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # Unique symbols would be shared by every copy of the library in a process and keep it loaded.
  target_compile_options(plc_options INTERFACE -fno-gnu-unique)
endif()
if(PLC_SANITIZE)
  target_compile_options(plc_options INTERFACE
    -fsanitize=${PLC_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(plc_options INTERFACE -fsanitize=${PLC_SANITIZE})
  if(PLC_SANITIZE MATCHES "integer")
    # Unsigned arithmetic that wraps and values that lose bits, which the headers of Qt and of the
    # standard library do on purpose.
    target_compile_options(plc_options INTERFACE
      -fsanitize-ignorelist=${CMAKE_CURRENT_LIST_DIR}/system-headers.ignorelist)
  endif()
endif()
if(PLC_COVERAGE)
  # Threads count too.
  target_compile_options(plc_options INTERFACE --coverage -fno-inline -fprofile-update=atomic)
  target_link_options(plc_options INTERFACE --coverage)
endif()

# Hardening of optimised builds: a write behind a buffer or over a return address ends the process,
# and nothing that the loader has resolved can be overwritten. The sanitizers check more than that
# and do not go together with it.
set(PLC_HARDENED OFF)
if(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$"
   AND NOT PLC_SANITIZE AND NOT PLC_COVERAGE AND NOT PLC_BUILD_FUZZERS)
  set(PLC_HARDENED ON)
  # A distribution's own definition would clash.
  target_compile_options(plc_options INTERFACE
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong)
  target_link_options(plc_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
endif()
# Without this CMake compiles programs to be placed anywhere, but leaves linking them so to chance.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
