# 32-bit ARM with Debian's cross compiler g++-arm-linux-gnueabihf and the packages qtbase5-dev:armhf,
# libgtest-dev:armhf and libgmock-dev:armhf. Tests run in qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm)
