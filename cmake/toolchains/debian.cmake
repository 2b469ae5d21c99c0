# What the other hosts share: Debian's cross compiler, a folder with the host's libraries, made when it is
# not there, and an emulator that runs what is built.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${DOV0_COMPILER_PREFIX}-gcc)
set(CMAKE_CXX_COMPILER ${DOV0_COMPILER_PREFIX}-g++)

cmake_path(SET project_folder NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../..)
set(CMAKE_SYSROOT ${project_folder}build/sysroot/${DOV0_DEBIAN_ARCHITECTURE})
execute_process(
    COMMAND ${project_folder}packaging/sysroot.sh ${DOV0_DEBIAN_ARCHITECTURE} ${CMAKE_SYSROOT}
    COMMAND_ERROR_IS_FATAL ANY)

# No build path in what is built.
set(CMAKE_C_FLAGS_INIT -ffile-prefix-map=${CMAKE_SYSROOT}=)
set(CMAKE_CXX_FLAGS_INIT -ffile-prefix-map=${CMAKE_SYSROOT}=)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(DOV0_EMULATOR_PATH ${DOV0_EMULATOR} REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${DOV0_EMULATOR_PATH} -L ${CMAKE_SYSROOT})
# A bundle has the byte order of the host that compiles it, and ICU reads no other.
set(GENRB ${CMAKE_CROSSCOMPILING_EMULATOR} ${CMAKE_SYSROOT}/usr/bin/genrb)
