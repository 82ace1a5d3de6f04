# Libraries that benchmarks measure the engine beside, where they are installed.
#
#   sonaro_link_peers(target peer ...)
#
# Links each peer that pkg-config knows, and defines SONARO_HAS_<PEER> for it.
function(sonaro_link_peers inTarget)
	find_package(PkgConfig QUIET)
	if(NOT PkgConfig_FOUND)
		return()
	endif()
	foreach(peer ${ARGN})
		pkg_check_modules(${peer} QUIET IMPORTED_TARGET GLOBAL ${peer})
		if(TARGET PkgConfig::${peer})
			string(MAKE_C_IDENTIFIER ${peer} peerName)
			string(TOUPPER ${peerName} peerName)
			target_link_libraries(${inTarget} PRIVATE PkgConfig::${peer})
			target_compile_definitions(${inTarget} PRIVATE SONARO_HAS_${peerName}=1)
		endif()
	endforeach()
endfunction()
