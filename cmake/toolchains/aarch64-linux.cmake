# Builds for 64-bit ARM under Linux with Debian's cross compiler, and runs tests with QEMU's emulation of programs.
#
#   mmdebstrap --variant=extract --architectures=arm64 --include=libboost-dev,... bookworm TREE
#   cmake --toolchain cmake/toolchains/aarch64-linux.cmake -DSONARO_TARGET_TREE=TREE ...
#
# SONARO_TARGET_TREE: a folder with the libraries of the target, as the first command makes it.
set(SONARO_TARGET_TREE "" CACHE PATH "A Debian tree of the target's architecture")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SONARO_TARGET_TREE)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_SYSROOT ${SONARO_TARGET_TREE})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${SONARO_TARGET_TREE})
set(ENV{PKG_CONFIG_LIBDIR}
	${SONARO_TARGET_TREE}/usr/lib/aarch64-linux-gnu/pkgconfig:${SONARO_TARGET_TREE}/usr/share/pkgconfig)

find_program(SONARO_QEMU_AARCH64 NAMES qemu-aarch64 qemu-aarch64-static)
if(SONARO_QEMU_AARCH64)
	set(CMAKE_CROSSCOMPILING_EMULATOR ${SONARO_QEMU_AARCH64} -L ${SONARO_TARGET_TREE})
endif()
# Programs of the target run when tests do, not when they are built.
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
