# What every target of the project shares: language level, floating point rules, warnings, sanitizers.

# Where a formula's order and width of arithmetic are fixed, results are the same bits on every
# processor and with every compiler: no contraction to fused multiply-add, no fast math.
add_library(SonaroOptions INTERFACE)
target_compile_features(SonaroOptions INTERFACE cxx_std_20)
target_compile_options(SonaroOptions INTERFACE
	-ffp-contract=off
	-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
	-Wcast-align -Wformat=2 -Wundef -Wextra-semi)
# What a compiler cache needs to know precompiled headers by their contents.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
	target_compile_options(SonaroOptions INTERFACE -fpch-preprocess)
elseif(CMAKE_CXX_COMPILER_ID MATCHES Clang)
	target_compile_options(SonaroOptions INTERFACE "SHELL:-Xclang -fno-pch-timestamp")
endif()
if(SONARO_WARNINGS_AS_ERRORS)
	target_compile_options(SonaroOptions INTERFACE -Werror)
endif()
if(SONARO_SANITIZE)
	target_compile_options(SonaroOptions INTERFACE
		-fsanitize=${SONARO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
	target_link_options(SonaroOptions INTERFACE -fsanitize=${SONARO_SANITIZE})
endif()
if(SONARO_POISON_SILENCE)
	target_compile_definitions(SonaroOptions INTERFACE ZORV_POISON_SILENCE=1)
endif()

if(SONARO_STATIC)
	set(SONARO_LIBRARY_TYPE STATIC)
else()
	set(SONARO_LIBRARY_TYPE SHARED)
endif()

# The version of the interface of shared libraries, which their sonames have: while the major version is 0, minor ones may
# change it, too. CONTRIBUTING.md says what each kind of version promises.
if(PROJECT_VERSION_MAJOR EQUAL 0)
	set(SONARO_SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
else()
	set(SONARO_SOVERSION ${PROJECT_VERSION_MAJOR})
endif()

# Settings of one of the project's libraries. Symbols are hidden unless a header exports them.
function(sonaro_configure_library inTarget)
	target_link_libraries(${inTarget} PRIVATE $<BUILD_INTERFACE:SonaroOptions>)
	target_compile_features(${inTarget} PUBLIC cxx_std_20)
	set_target_properties(${inTarget} PROPERTIES
		POSITION_INDEPENDENT_CODE ON
		CXX_EXTENSIONS OFF
		CXX_VISIBILITY_PRESET hidden
		VISIBILITY_INLINES_HIDDEN ON
		INSTALL_RPATH $ORIGIN
		VERSION ${PROJECT_VERSION}
		SOVERSION ${SONARO_SOVERSION})
	# Calls within a library stay there, where g++ would otherwise let another library put itself in between.
	if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
		target_compile_options(${inTarget} PRIVATE -fno-semantic-interposition)
	endif()
endfunction()

# Headers that most sources of a target include, parsed once for all of them. Sources name what they use all the
# same; a build with SONARO_PRECOMPILE=tests, as that of the thread sanitizer, fails when one does not.
#
#   sonaro_precompile(target <header> ...)
function(sonaro_precompile inTarget)
	if(SONARO_PRECOMPILE STREQUAL all)
		target_precompile_headers(${inTarget} PRIVATE ${ARGN})
	endif()
endfunction()

# The standard headers that most sources of the product include.
set(SONARO_COMMON_HEADERS
	<algorithm> <array> <atomic> <cmath> <cstdint> <filesystem> <functional> <map> <memory> <mutex> <optional>
	<string> <string_view> <unordered_map> <utility> <vector> <boost/rational.hpp>)

# One companion library under Platform/: public headers in Inc/, sources in Src/.
#
#   sonaro_add_companion(zorvcore SOURCES Src/a.cpp ... DEPENDS other-companions ...)
function(sonaro_add_companion inName)
	cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS")
	add_library(${inName} ${SONARO_LIBRARY_TYPE} ${arg_SOURCES})
	add_library(Sonaro::${inName} ALIAS ${inName})
	sonaro_configure_library(${inName})
	target_include_directories(${inName} PUBLIC
		$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/Inc>
		$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
	target_link_libraries(${inName} PUBLIC ${arg_DEPENDS})
	set_property(GLOBAL APPEND PROPERTY SONARO_INSTALL_TARGETS ${inName})
	set_property(GLOBAL APPEND PROPERTY SONARO_INSTALL_HEADERS ${CMAKE_CURRENT_SOURCE_DIR}/Inc/)
endfunction()

# One test program, its cases entered with ctest.
#
#   sonaro_add_test(NAME [OPTIMIZED] [ONE_THREAD] SOURCES a.cpp ... LIBRARIES target ...)
#
# OPTIMIZED: its own code is most of what it runs, as that of a naive renderer, and is made as fast as the product.
# ONE_THREAD: nothing in it starts a thread, so the thread sanitizer has nothing to find and its build leaves it out.
function(sonaro_add_test inName)
	cmake_parse_arguments(PARSE_ARGV 1 arg "OPTIMIZED;ONE_THREAD" "" "SOURCES;LIBRARIES")
	add_executable(${inName} ${arg_SOURCES})
	target_link_libraries(${inName} PRIVATE
		SonaroOptions SonaroTestSanitizers ${arg_LIBRARIES} GTest::gmock_main Boost::headers)
	if(NOT arg_OPTIMIZED)
		target_link_libraries(${inName} PRIVATE SonaroTestOptions)
	endif()
	# What is not optimised has more functions than an object of the default kind has room for.
	if(MINGW)
		target_compile_options(${inName} PRIVATE -Wa,-mbig-obj)
	endif()
	# A compiler takes up to a gigabyte for sixteen sources, and has others beside it.
	set_target_properties(${inName} PROPERTIES CXX_EXTENSIONS OFF UNITY_BUILD_BATCH_SIZE 16)
	if(NOT SONARO_PRECOMPILE STREQUAL none)
		set(headers SonaroTestHeaders)
		if(arg_OPTIMIZED)
			set(headers SonaroOptimizedTestHeaders)
		endif()
		target_precompile_headers(${inName} REUSE_FROM ${headers})
	endif()
	if(arg_ONE_THREAD AND SONARO_SANITIZE MATCHES thread)
		set_target_properties(${inName} PROPERTIES EXCLUDE_FROM_ALL ON)
		return()
	endif()
	# The thread sanitizer sleeps for a second at the end of each process that had threads, of which the tests of the
	# command start hundreds. Their threads have ended by then.
	# What the libraries of drawings and fonts keep to the end, and what their threads share, is not ours.
	set(environment "")
	if(SONARO_SANITIZE MATCHES thread)
		set(environment ENVIRONMENT
			TSAN_OPTIONS=atexit_sleep_ms=10:print_suppressions=0:suppressions=${PROJECT_SOURCE_DIR}/Tests/Support/races.txt)
	elseif(SONARO_SANITIZE)
		set(environment ENVIRONMENT
			LSAN_OPTIONS=print_suppressions=0:suppressions=${PROJECT_SOURCE_DIR}/Tests/Support/leaks.txt)
	endif()
	gtest_discover_tests(${inName} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 ${environment})
endfunction()
