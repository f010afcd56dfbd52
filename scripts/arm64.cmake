# Builds for Linux on arm64 with the cross compiler of a Debian on x86.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# Python's headers look for the machine's pyconfig.h where only the package of that machine has it.
# The stable interface takes from it the sizes of C's types, which are the same on both.
file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/include")
file(CREATE_LINK "/usr/include/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu"
     "${CMAKE_BINARY_DIR}/include/aarch64-linux-gnu" SYMBOLIC)
set(CMAKE_CXX_FLAGS_INIT "-isystem ${CMAKE_BINARY_DIR}/include")
