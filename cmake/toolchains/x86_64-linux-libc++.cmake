# Builds for this machine with clang++ and libc++, the C++ library of LLVM, in place of that of GCC.
#
#   cmake --toolchain cmake/toolchains/x86_64-linux-libc++.cmake -DSONARO_LIBCXX=FOLDER ...
#
# SONARO_LIBCXX: the folder with include/c++/v1 and lib, such as /usr/lib/llvm-22.
set(SONARO_LIBCXX /usr/lib/llvm-22 CACHE PATH "The folder of libc++")
set(SONARO_CLANG clang++-22 CACHE STRING "The compiler, of the same version")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SONARO_LIBCXX SONARO_CLANG)

set(CMAKE_CXX_COMPILER ${SONARO_CLANG})
# The sources of GoogleTest ask for a compiler of C too, which is linked with the same options.
string(REPLACE "clang++" "clang" CMAKE_C_COMPILER "${SONARO_CLANG}")
# Boost still names what the standard has removed since.
set(CMAKE_CXX_FLAGS_INIT
	"-nostdinc++ -isystem ${SONARO_LIBCXX}/include/c++/v1 -D_LIBCPP_ENABLE_CXX17_REMOVED_UNARY_BINARY_FUNCTION")
set(linkFlags "-nostdlib++ -L${SONARO_LIBCXX}/lib -Wl,-rpath,${SONARO_LIBCXX}/lib")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${linkFlags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${linkFlags}")
# After all others, since these may be archives.
set(CMAKE_CXX_STANDARD_LIBRARIES_INIT "-lc++ -lc++abi")
