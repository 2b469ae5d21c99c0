# Debian on i386: little-endian, 32-bit. Emulated too, because not every kernel runs 32-bit programs.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(DOV0_DEBIAN_ARCHITECTURE i386)
set(DOV0_COMPILER_PREFIX i686-linux-gnu)
set(DOV0_EMULATOR qemu-i386-static)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
