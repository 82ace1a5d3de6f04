# Packages of Debian by "cpack -G DEB", in builds of the preset "packages". Scripts/packages.sh makes and tries them.
#
#   libsonaro<version of the interface>   the engine's shared libraries and its companions'
#   libsonaro-dev                         headers, SonaroHost, CMake package, pkg-config files
#   sonaro                                the command, with man page, completions and documents
#   python3-sonaro                        the Python package
find_program(SONARO_GZIP gzip)
if(SONARO_STATIC OR NOT SONARO_GZIP OR NOT SONARO_BUILD_PYTHON OR NOT CMAKE_INSTALL_PREFIX STREQUAL /usr)
	return()
endif()

set(SONARO_PACKAGE_CONTACT "The Sonaro maintainers <maintainers@sonaro.invalid>" CACHE STRING
	"Name and address of who makes the packages")
set(debianFolder ${CMAKE_CURRENT_LIST_DIR}/debian)
set(madeFolder ${CMAKE_CURRENT_BINARY_DIR}/debian)
set(libraryPackage libsonaro${SONARO_SOVERSION})
set(packageVersion ${PROJECT_VERSION}-1)
# The environment variable SOURCE_DATE_EPOCH stands for the time, as elsewhere.
string(TIMESTAMP SONARO_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${debianFolder}/changelog.in ${madeFolder}/changelog @ONLY)
file(READ ${PROJECT_SOURCE_DIR}/LICENSE licence)
string(REGEX REPLACE "^MIT License\n\nCopyright [^\n]*\n\n" "" licence "${licence}")
string(REGEX REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REGEX REPLACE "\n([^\n])" "\n \\1" SONARO_LICENCE_TEXT " ${licence}")
configure_file(${debianFolder}/copyright.in ${madeFolder}/copyright @ONLY)

# Installs INPUT compressed as DESTINATION.gz, for COMPONENT alone.
function(sonaro_install_compressed inComponent inInput inDestination)
	cmake_path(GET inDestination PARENT_PATH folder)
	string(CONFIGURE [=[
		set(output "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/@inDestination@.gz")
		file(MAKE_DIRECTORY "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/@folder@")
		execute_process(COMMAND "@SONARO_GZIP@" -9nc "@inInput@" OUTPUT_FILE "${output}" COMMAND_ERROR_IS_FATAL ANY)
		file(CHMOD "${output}" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
	]=] code @ONLY)
	install(CODE "${code}" COMPONENT ${inComponent} EXCLUDE_FROM_ALL)
endfunction()

# What Debian asks of every package: copyright, changelogs, and the reasons of what lintian is to leave alone.
function(sonaro_install_debian_files inComponent inPackage)
	set(folder ${CMAKE_INSTALL_DATADIR}/doc/${inPackage})
	install(FILES ${madeFolder}/copyright DESTINATION ${folder} COMPONENT ${inComponent} EXCLUDE_FROM_ALL)
	sonaro_install_compressed(${inComponent} ${madeFolder}/changelog ${folder}/changelog.Debian)
	sonaro_install_compressed(${inComponent} ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${folder}/changelog)
	file(READ ${debianFolder}/overrides overrides)
	if(EXISTS ${debianFolder}/overrides.${inComponent})
		file(READ ${debianFolder}/overrides.${inComponent} more)
		string(APPEND overrides "${more}")
	endif()
	string(CONFIGURE "${overrides}" overrides @ONLY)
	file(CONFIGURE OUTPUT ${madeFolder}/${inPackage} CONTENT "${overrides}" @ONLY)
	install(FILES ${madeFolder}/${inPackage} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
		COMPONENT ${inComponent} EXCLUDE_FROM_ALL)
endfunction()
sonaro_install_debian_files(LibraryDebian ${libraryPackage})
sonaro_install_debian_files(DevelopmentDebian libsonaro-dev)
sonaro_install_debian_files(CommandDebian sonaro)
sonaro_install_debian_files(PythonDebian python3-sonaro)
sonaro_install_compressed(CommandDebian ${PROJECT_SOURCE_DIR}/Docs/sonaro.1 ${CMAKE_INSTALL_MANDIR}/man1/sonaro.1)
install(FILES ${PROJECT_SOURCE_DIR}/Host/Completions/_sonaro DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions
	COMPONENT CommandDebian EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sonaro)
# Each package has one of its own, as the first line of its description.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT ${SONARO_PACKAGE_CONTACT})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
	OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL
	Runtime LibraryDebian
	Development Host DevelopmentDebian
	Command CommandDebian Documents
	Python PythonModule PythonDebian)
set(CPACK_COMPONENT_RUNTIME_GROUP library)
set(CPACK_COMPONENT_LIBRARYDEBIAN_GROUP library)
set(CPACK_COMPONENT_DEVELOPMENT_GROUP development)
set(CPACK_COMPONENT_HOST_GROUP development)
set(CPACK_COMPONENT_DEVELOPMENTDEBIAN_GROUP development)
set(CPACK_COMPONENT_COMMAND_GROUP command)
set(CPACK_COMPONENT_COMMANDDEBIAN_GROUP command)
set(CPACK_COMPONENT_DOCUMENTS_GROUP command)
set(CPACK_COMPONENT_PYTHON_GROUP python)
set(CPACK_COMPONENT_PYTHONMODULE_GROUP python)
set(CPACK_COMPONENT_PYTHONDEBIAN_GROUP python)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE sonaro)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Libraries of these packages are looked for in the build, those of others in the packages that are installed.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "")
foreach(target ${installTargets})
	get_target_property(folder ${target} BINARY_DIR)
	list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${folder})
endforeach()
# What is loaded at the first movie, of the version that the headers were of.
set(movieLibraries "")
if(SONARO_WITH_LIBAV)
	foreach(name avcodec avformat)
		string(REGEX MATCH "^[0-9]+" major "${libav_lib${name}_VERSION}")
		list(APPEND movieLibraries "lib${name}${major} | lib${name}-extra${major}")
	endforeach()
endif()
list(JOIN movieLibraries ", " movieLibraries)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${libraryPackage})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
# SonaroHost and the command use what only this version has, so all go together; others go by the soname.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "sample-exact audio render engine (shared libraries)
Sonaro renders the sound of timelines: a media editing application describes
clips, tracks, nested sequences, effects and automated parameters, and pulls
blocks of 32-bit float audio for playback, scrubbing and export.
.
This package contains the engine and the companion libraries that it is made
of.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libsonaro-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
# The packages of what SonaroHost, a static library, is linked with, by their names of pkg-config.
set(developmentPackages libboost-dev)
set(debianOf_cairo libcairo2-dev)
set(debianOf_libgvc libgraphviz-dev)
set(debianOf_libutf8proc libutf8proc-dev)
set(debianOf_libzip libzip-dev)
set(debianOf_pangocairo libpango1.0-dev)
set(debianOf_sndfile libsndfile1-dev)
set(debianOf_lilv-0 liblilv-dev)
set(debianOf_libmysofa libmysofa-dev)
set(debianOf_portaudio-2.0 portaudio19-dev)
foreach(package ${SONARO_HOST_PACKAGES})
	if(NOT debianOf_${package})
		message(FATAL_ERROR "cmake/SonaroPackages.cmake does not say which package of Debian has ${package}")
	endif()
	list(APPEND developmentPackages ${debianOf_${package}})
endforeach()
list(JOIN developmentPackages ", " developmentPackages)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${libraryPackage} (= ${packageVersion}), ${developmentPackages}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "${movieLibraries}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "sample-exact audio render engine (development files)
Sonaro renders the sound of timelines: a media editing application describes
clips, tracks, nested sequences, effects and automated parameters, and pulls
blocks of 32-bit float audio for playback, scrubbing and export.
.
This package contains what programs with the engine are built from: headers,
the static library SonaroHost with media, timelines, effects and playback, and
files for CMake and pkg-config.")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME sonaro)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "${libraryPackage} (= ${packageVersion})")
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS "${movieLibraries}")
set(CPACK_DEBIAN_COMMAND_DESCRIPTION "render the sound of timelines, exact to the sample
The command sonaro renders OpenTimelineIO timelines and sound files to sound
files, plays and serves them, draws their waveforms and graphs, measures their
loudness, and shows their formats and contents.
.
This package contains the command, its man page and completions, the documents
of the engine, and examples.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-sonaro)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
math(EXPR nextMinor "${Python3_VERSION_MINOR} + 1")
string(JOIN ", " CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
	"${libraryPackage} (= ${packageVersion})"
	"python3 (>= 3.${Python3_VERSION_MINOR}~)" "python3 (<< 3.${nextMinor}~)" python3-numpy)
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "${movieLibraries}")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS python3-distributed)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${debianFolder}/postinst ${debianFolder}/prerm)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "render the sound of timelines, exact to the sample (Python 3)
Sonaro renders OpenTimelineIO timelines and sound files to sound files or NumPy
arrays, measures their loudness, resamples and stretches.
.
This package contains the module sonaro for Python 3.")

# What CPack has no settings for.
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/FinishDebianPackages.cmake)
include(CPack)
