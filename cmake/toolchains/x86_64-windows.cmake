# Builds for 64-bit Windows with Debian's MinGW-w64, whose threads are those of POSIX, and runs tests with Wine.
#
#   cmake --toolchain cmake/toolchains/x86_64-windows.cmake -DSONARO_TARGET_TREE=TREE ...
#
# SONARO_TARGET_TREE: a folder with include/boost and include/xxhash.h, which are the same for every system. /usr/include
# does not serve, since the headers of the system that builds stand beside them there.
set(SONARO_TARGET_TREE "" CACHE PATH "A folder with what is the same for every system")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SONARO_TARGET_TREE)

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_CXX_FLAGS_INIT "-isystem ${SONARO_TARGET_TREE}/include")
set(CMAKE_FIND_ROOT_PATH ${SONARO_TARGET_TREE} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} ${SONARO_TARGET_TREE}/lib/pkgconfig)
# Windows looks for libraries beside the program.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

find_program(SONARO_WINE NAMES wine64 wine PATHS /usr/lib/wine)
if(SONARO_WINE)
	set(CMAKE_CROSSCOMPILING_EMULATOR ${SONARO_WINE})
endif()
# Programs of the target run when tests do, not when they are built.
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
