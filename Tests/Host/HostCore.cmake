# What is tested of SonaroHost where the rooms that need packages of the system are not built.
add_library(SonaroSequenceTestSupport STATIC
	Sequence/MemoryMedia.cpp
	Sequence/RandomSequence.cpp
	Sequence/SequenceShrinking.cpp
	../Support/Pull.cpp)
target_include_directories(SonaroSequenceTestSupport PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
target_link_libraries(SonaroSequenceTestSupport
	PUBLIC SonaroOptions SonaroTestSanitizers SonaroHost GTest::gmock Boost::headers)
set_target_properties(SonaroSequenceTestSupport PROPERTIES CXX_EXTENSIONS OFF)

sonaro_add_test(host_core_tests OPTIMIZED
	SOURCES
		AutomationCurveTest.cpp
		AutomationParameterTest.cpp
		LoudnessMeterTest.cpp
		Offline/DenoiseProcessorTest.cpp
		Offline/NoisySpeech.cpp
		PathTextTest.cpp
		PeakLimiterTest.cpp
		PublishedStateTest.cpp
		Ramp/SpeedCurveTest.cpp
		RateConverterTest.cpp
		SampleQuantizerTest.cpp
		Sequence/LeftGainTest.cpp
		Sequence/MulticamTest.cpp
		Sequence/NaiveParameter.cpp
		Sequence/NaiveSequence.cpp
		Sequence/NestWalkTest.cpp
		Sequence/RandomSequenceTest.cpp
		Sequence/SequenceGraphTest.cpp
		TimePositionTest.cpp
		Sound.cpp
		TimeTransformsTest.cpp
	LIBRARIES SonaroSequenceTestSupport)
target_include_directories(host_core_tests PRIVATE ${PROJECT_SOURCE_DIR}/Host/Src)
