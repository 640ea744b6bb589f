# A big-endian machine with Debian's cross compiler g++-s390x-linux-gnu and the packages
# qtbase5-dev:s390x, libgtest-dev:s390x and libgmock-dev:s390x. Tests run in qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(CMAKE_CXX_COMPILER s390x-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x)
