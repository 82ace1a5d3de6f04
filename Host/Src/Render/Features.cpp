#include "SonaroHost/Render/Features.h"

#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Binaural/SofaEars.h"
#include "SonaroHost/Effects/EffectLibrary.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include <cairo.h>
#include <pango/pango-utils.h>
#include <sndfile.h>
#include <utf8proc.h>
#include <zip.h>

#include <array>

namespace SonaroHost
{

namespace
{

Feature MakeFeature(
	char const* inName, char const* inTitle, std::string const& inLibraries, char const* inWhyNot)
{
	return {inName, inTitle, !inLibraries.empty(), inLibraries.empty() ? inWhyNot : inLibraries};
}

std::vector<Feature> ListParts()
{
	using namespace dsp::stretch::omega;
	bool const hasRubberBand = IsOmegaEngineKindBuiltIn(OmegaEngineKind::kRubberBand);
	return {
		MakeFeature("movies", "Movies", DescribeMovieLibraries(),
			"libav is not installed, or was not built in with SONARO_WITH_LIBAV, which needs "
			"libavformat-dev, "
			"libavcodec-dev and libswresample-dev"),
		MakeFeature("lv2", "LV2 plugins", Effects::DescribeEffectLibraries(),
			"not built in with SONARO_WITH_LV2, which needs liblilv-dev and lv2-dev"),
		MakeFeature("sofa", "SOFA files", DescribeSofaLibrary(),
			"not built in with SONARO_WITH_SOFA, which needs libmysofa-dev and libeigen3-dev; --binaural has "
			"its own ears"),
		MakeFeature("rubberband", "Rubber Band", hasRubberBand ? "the Rubber Band Library (GPL)" : "",
			"not built in with SONARO_WITH_RUBBERBAND, which needs librubberband-dev"),
	};
}

std::vector<std::string> ListInputFormats()
{
	int count = 0;
	sf_command(nullptr, SFC_GET_FORMAT_MAJOR_COUNT, &count, sizeof count);
	std::vector<std::string> formats;
	for (int i = 0; i < count; ++i)
	{
		SF_FORMAT_INFO info{};
		info.format = i;
		if (sf_command(nullptr, SFC_GET_FORMAT_MAJOR, &info, sizeof info) == 0 && info.name)
		{
			formats.emplace_back(info.name);
		}
	}
	return formats;
}

std::vector<std::string> ListEngines()
{
	using namespace dsp::stretch::omega;
	std::vector<std::string> engines{"omega", "scaler"};
	if (IsOmegaEngineKindBuiltIn(OmegaEngineKind::kRubberBand))
	{
		engines.emplace_back("rubberband");
	}
	return engines;
}

// libsndfile puts its name before its version.
std::string GetSoundFileVersion()
{
	std::array<char, 128> text{};
	sf_command(nullptr, SFC_GET_LIB_VERSION, text.data(), static_cast<int>(text.size()));
	std::string const version = text.data();
	return version.substr(version.rfind('-') + 1);
}

} // namespace

Features ListFeatures()
{
	Features features;
	features.mParts = ListParts();
	features.mInputFormats = ListInputFormats();
	for (OutputContainer const container :
		{OutputContainer::kWav, OutputContainer::kAiff, OutputContainer::kFlac, OutputContainer::kCaf})
	{
		features.mOutputFormats.push_back(GetName(container));
	}
	for (OutputSamples const samples :
		{OutputSamples::kInteger16, OutputSamples::kInteger24, OutputSamples::kFloat32})
	{
		features.mOutputSamples.push_back(GetName(samples));
	}
	features.mLayouts = {"mono", "stereo", "5.1", "ambisonic1", "1 to 64 channels"};
	features.mStretchEngines = ListEngines();
	features.mLibraries = {{"libsndfile", GetSoundFileVersion()}, {"cairo", cairo_version_string()},
		{"Pango", pango_version_string()}, {"libzip", zip_libzip_version()},
		{"utf8proc", utf8proc_version()}};
	return features;
}

} // namespace SonaroHost
