#pragma once

#include <string>
#include <vector>

namespace SonaroHost
{

// A part of a build that may be left out.
struct Feature
{
	// For machines, as "movies", and for people.
	std::string mName;
	std::string mTitle;
	bool mIsThere = false;
	// What does it, as "libmysofa 1.3", or why it is not there and what it takes.
	std::string mText;
};

// A library that is used, in the version that runs.
struct LibraryVersion
{
	std::string mName;
	std::string mVersion;
};

// What this build can do on this machine.
struct Features
{
	std::vector<Feature> mParts;
	// The containers of sound files that can be read, those that can be written, and the samples in these.
	std::vector<std::string> mInputFormats;
	std::vector<std::string> mOutputFormats;
	std::vector<std::string> mOutputSamples;
	// The names of layouts, and of what keeps and shifts pitches.
	std::vector<std::string> mLayouts;
	std::vector<std::string> mStretchEngines;
	// The libraries that are always there, as they are at run time.
	std::vector<LibraryVersion> mLibraries;
};

// It looks for libraries that are loaded when they are needed.
Features ListFeatures();

} // namespace SonaroHost
