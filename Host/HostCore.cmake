# SonaroHost of its core alone, for systems where the packages that the rest needs are not.
add_library(SonaroHost STATIC
	${coreSources}
	Src/Binaural/SofaAbsent.cpp
	Src/Effects/EffectsAbsent.cpp)
add_library(Sonaro::SonaroHost ALIAS SonaroHost)
sonaro_configure_library(SonaroHost)
sonaro_precompile(SonaroHost ${SONARO_COMMON_HEADERS})
target_include_directories(SonaroHost
	PUBLIC
		$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/Inc>
		$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
	PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/Src)
target_link_libraries(SonaroHost PUBLIC Sonaro)
