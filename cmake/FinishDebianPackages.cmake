# Run by CPack after it has made the packages: adds what it has no settings for.
#
# - Multi-Arch, by which libraries of several architectures are installed side by side.
# - A trigger in place of the scripts that run ldconfig.
# - Stripping of static libraries and of comments of the compiler.
set(multiArch_libs same)
set(multiArch_sound foreign)

function(run)
	execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

foreach(package ${CPACK_PACKAGE_FILES})
	set(folder ${package}.folder)
	file(REMOVE_RECURSE ${folder})
	run(dpkg-deb --raw-extract ${package} ${folder})
	file(READ ${folder}/DEBIAN/control control)
	string(REGEX MATCH "\nSection: ([a-z]+)" section "${control}")
	if(multiArch_${CMAKE_MATCH_1})
		string(REGEX REPLACE "\nSection:" "\nMulti-Arch: ${multiArch_${CMAKE_MATCH_1}}\nSection:" control "${control}")
		file(WRITE ${folder}/DEBIAN/control "${control}")
	endif()
	if(EXISTS ${folder}/DEBIAN/shlibs)
		file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
		file(WRITE ${folder}/DEBIAN/triggers "activate-noawait ldconfig\n")
	endif()
	file(GLOB_RECURSE binaries LIST_DIRECTORIES FALSE ${folder}/usr/bin/* ${folder}/*.so ${folder}/*.so.* ${folder}/*.a)
	foreach(binary ${binaries})
		if(NOT IS_SYMLINK ${binary})
			run(strip --enable-deterministic-archives --strip-debug --remove-section=.comment --remove-section=.note ${binary})
		endif()
	endforeach()
	execute_process(COMMAND sh -c "find usr -type f -print0 | LC_ALL=C sort -z | xargs -0 md5sum"
		WORKING_DIRECTORY ${folder} OUTPUT_FILE ${folder}/DEBIAN/md5sums COMMAND_ERROR_IS_FATAL ANY)
	run(dpkg-deb --root-owner-group -Zxz --build ${folder} ${package})
	file(REMOVE_RECURSE ${folder})
endforeach()
