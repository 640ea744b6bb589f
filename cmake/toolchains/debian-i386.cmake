# 32-bit x86 with Debian's cross compiler g++-i686-linux-gnu and the packages qtbase5-dev:i386,
# libgtest-dev:i386 and libgmock-dev:i386. Tests run on the x86_64 machine itself.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
# Its tests need no emulator.
set(CMAKE_CROSSCOMPILING_EMULATOR env)
