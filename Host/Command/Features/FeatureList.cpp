#include "FeatureList.h"

#include "Report/Json.h"
#include "SonaroHost/Playback/SoundDevices.h"
#include "SonaroHost/Render/Features.h"
#include "Terminal/TextTable.h"

#include <vector>

namespace SonaroCommand
{

namespace
{

using SonaroHost::Feature;
using SonaroHost::Features;
using SonaroHost::LibraryVersion;

std::string Join(std::vector<std::string> const& inTexts)
{
	std::string joined;
	for (std::string const& text : inTexts)
	{
		joined += (joined.empty() ? "" : ", ") + text;
	}
	return joined;
}

// The library's, with the devices of playback and the server.
Features ListAllFeatures()
{
	Features features = SonaroHost::ListFeatures();
	std::string const libraries = SonaroHost::Playback::DescribeSoundLibraries();
	features.mParts.push_back({"devices", "Sound devices", !libraries.empty(),
		libraries.empty() ? "not built in with SONARO_WITH_PORTAUDIO, which needs portaudio19-dev"
						  : libraries});
#ifdef SONARO_HTTPLIB_VERSION
	features.mParts.push_back({"serving", "Serving", true, "cpp-httplib " SONARO_HTTPLIB_VERSION});
#else
	features.mParts.push_back(
		{"serving", "Serving", false, "not built in with SONARO_WITH_SERVE, which needs libcpp-httplib-dev"});
#endif
	return features;
}

} // namespace

std::string ListFeaturesForPeople()
{
	Features const features = ListAllFeatures();
	std::vector<std::vector<std::string>> rows;
	rows.reserve(features.mParts.size());
	for (Feature const& part : features.mParts)
	{
		rows.push_back({part.mTitle, part.mIsThere ? "yes" : "no", part.mText});
	}
	std::string text = "sonaro " SONARO_VERSION "\n" + FormatTable(rows);
	std::vector<std::string> libraries;
	libraries.reserve(features.mLibraries.size());
	for (LibraryVersion const& library : features.mLibraries)
	{
		libraries.push_back(library.mName + " " + library.mVersion);
	}
	text += "reads: " + Join(features.mInputFormats) + "\n";
	text += "writes: " + Join(features.mOutputFormats) + "; " + Join(features.mOutputSamples) + "\n";
	text += "layouts: " + Join(features.mLayouts) + "\n";
	text += "stretching: " + Join(features.mStretchEngines) + "\n";
	return text + "libraries: " + Join(libraries) + "\n";
}

std::string ListFeaturesForMachines()
{
	Features const features = ListAllFeatures();
	Json json{{"version", SONARO_VERSION}};
	for (Feature const& part : features.mParts)
	{
		json["parts"][part.mName] = {{"available", part.mIsThere}, {"text", part.mText}};
	}
	json["inputFormats"] = features.mInputFormats;
	json["outputFormats"] = features.mOutputFormats;
	json["outputSamples"] = features.mOutputSamples;
	json["layouts"] = features.mLayouts;
	json["stretchEngines"] = features.mStretchEngines;
	for (LibraryVersion const& library : features.mLibraries)
	{
		json["libraries"][library.mName] = library.mVersion;
	}
	return ToText(json);
}

} // namespace SonaroCommand
