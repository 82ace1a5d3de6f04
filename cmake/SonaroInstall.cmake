# Installation, by components:
#
#   Runtime        the shared libraries
#   Development    headers, static libraries, the CMake package and sonaro.pc
#   Host           SonaroHost: its library, headers, CMake targets and sonaro-host.pc
#   Command        the program sonaro and the completions of bash (Host/CMakeLists.txt)
#   CommandPlain   its man page and the completions of zsh, which packages have in other forms and places
#   Python         the Python package, with its module as PythonModule (Python/CMakeLists.txt)
#   Documents      the pages and the examples
#   Licences       what has to go with any of these
include(CMakePackageConfigHelpers)

get_property(installTargets GLOBAL PROPERTY SONARO_INSTALL_TARGETS)
get_property(installHeaders GLOBAL PROPERTY SONARO_INSTALL_HEADERS)
set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/Sonaro)
set(pkgConfigFolder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS ${installTargets} EXPORT SonaroTargets
	LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
	ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
	RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime)
install(DIRECTORY ${installHeaders} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
	COMPONENT Development FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/LICENSES-OF-OTHERS.md
	DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Licences)

# In the folders of the repository, between which pages have links.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSES-OF-OTHERS.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documents)
install(DIRECTORY Docs Examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documents
	FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.json" PATTERN "*.flac" PATTERN "*.otio" PATTERN "*.cpp"
	PATTERN "*.py" PATTERN "*.sh" PATTERN Examples/*/CMakeLists.txt
	PATTERN Generator EXCLUDE PATTERN Site EXCLUDE
	REGEX "/Docs/[^/]*[.](py|sh)$" EXCLUDE)

install(EXPORT SonaroTargets NAMESPACE Sonaro:: DESTINATION ${packageFolder} COMPONENT Development)

# find_package(Sonaro COMPONENTS Host) gives Sonaro::SonaroHost.
if(TARGET SonaroHost)
	install(TARGETS SonaroHost EXPORT SonaroHostTargets
		ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Host)
	install(DIRECTORY ${PROJECT_SOURCE_DIR}/Host/Inc/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
		COMPONENT Host FILES_MATCHING PATTERN "*.h")
	install(EXPORT SonaroHostTargets NAMESPACE Sonaro:: DESTINATION ${packageFolder} COMPONENT Host)
	get_property(SONARO_HOST_PACKAGES GLOBAL PROPERTY SONARO_HOST_PACKAGES)
endif()
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/SonaroConfig.cmake.in
	${CMAKE_CURRENT_BINARY_DIR}/SonaroConfig.cmake INSTALL_DESTINATION ${packageFolder})
# What one soname may stand for; see sonaro_configure_library.
if(PROJECT_VERSION_MAJOR EQUAL 0)
	set(compatibility SameMinorVersion)
else()
	set(compatibility SameMajorVersion)
endif()
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/SonaroConfigVersion.cmake
	COMPATIBILITY ${compatibility})
install(FILES
	${CMAKE_CURRENT_BINARY_DIR}/SonaroConfig.cmake
	${CMAKE_CURRENT_BINARY_DIR}/SonaroConfigVersion.cmake
	DESTINATION ${packageFolder} COMPONENT Development)

# Linking by hand names every library: the engine, then what it stands on, from the top down.
set(linkNames "")
foreach(target ${installTargets})
	get_target_property(name ${target} OUTPUT_NAME)
	if(NOT name)
		set(name ${target})
	endif()
	list(PREPEND linkNames -l${name})
endforeach()
list(JOIN linkNames " " SONARO_LINK_NAMES)
# The prefix is found from where the file lies, so that an installed copy may be moved.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
	set(SONARO_PKGCONFIG_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
	file(RELATIVE_PATH SONARO_PKGCONFIG_PREFIX /prefix/${pkgConfigFolder} /prefix)
	string(REGEX REPLACE "/$" "" SONARO_PKGCONFIG_PREFIX "\${pcfiledir}/${SONARO_PKGCONFIG_PREFIX}")
endif()
# An absolute folder takes the place of the prefix.
cmake_path(APPEND SONARO_PKGCONFIG_LIBDIR "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND SONARO_PKGCONFIG_INCLUDEDIR "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/sonaro.pc.in ${CMAKE_CURRENT_BINARY_DIR}/sonaro.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/sonaro.pc DESTINATION ${pkgConfigFolder} COMPONENT Development)
if(TARGET SonaroHost)
	list(JOIN SONARO_HOST_PACKAGES ", " SONARO_HOST_REQUIRES)
	configure_file(${CMAKE_CURRENT_LIST_DIR}/sonaro-host.pc.in ${CMAKE_CURRENT_BINARY_DIR}/sonaro-host.pc @ONLY)
	install(FILES ${CMAKE_CURRENT_BINARY_DIR}/sonaro-host.pc DESTINATION ${pkgConfigFolder} COMPONENT Host)
endif()
