# Installation: libraries, public headers, the CMake package and the pkg-config file.
include(CMakePackageConfigHelpers)

get_property(installTargets GLOBAL PROPERTY SONARO_INSTALL_TARGETS)
get_property(installHeaders GLOBAL PROPERTY SONARO_INSTALL_HEADERS)
set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/Sonaro)

install(TARGETS ${installTargets} EXPORT SonaroTargets
	LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
	ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
	RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${installHeaders} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/LICENSES-OF-OTHERS.md
	DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(EXPORT SonaroTargets NAMESPACE Sonaro:: DESTINATION ${packageFolder})

# The component Host: find_package(Sonaro COMPONENTS Host) gives Sonaro::SonaroHost.
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
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/SonaroConfigVersion.cmake
	COMPATIBILITY SameMajorVersion)
install(FILES
	${CMAKE_CURRENT_BINARY_DIR}/SonaroConfig.cmake
	${CMAKE_CURRENT_BINARY_DIR}/SonaroConfigVersion.cmake
	DESTINATION ${packageFolder})

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
	file(RELATIVE_PATH SONARO_PKGCONFIG_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
	string(REGEX REPLACE "/$" "" SONARO_PKGCONFIG_PREFIX "\${pcfiledir}/${SONARO_PKGCONFIG_PREFIX}")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/sonaro.pc.in ${CMAKE_CURRENT_BINARY_DIR}/sonaro.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/sonaro.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
