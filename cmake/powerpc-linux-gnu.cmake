# Cross build for the controller: 32-bit PowerPC, big-endian; tests run under qemu's user mode.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR powerpc)
set(CMAKE_C_COMPILER powerpc-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER powerpc-linux-gnu-g++)
set(CMAKE_FIND_ROOT_PATH /usr/powerpc-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# With a libm that the emulator takes, made by the main CMakeLists.txt.
set(CORVANE_EMULATOR_LIBRARIES ${CMAKE_BINARY_DIR}/emulator)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-ppc -L /usr/powerpc-linux-gnu
    -E LD_LIBRARY_PATH=${CORVANE_EMULATOR_LIBRARIES})
