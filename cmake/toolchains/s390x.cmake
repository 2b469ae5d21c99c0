# Debian on s390x: big-endian, 64-bit.
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(DOV0_DEBIAN_ARCHITECTURE s390x)
set(DOV0_COMPILER_PREFIX s390x-linux-gnu)
set(DOV0_EMULATOR qemu-s390x-static)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
