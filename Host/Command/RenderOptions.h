#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/OutputFormat.h"

#include <optional>
#include <string>

namespace SonaroCommand
{

// The options of "sonaro render" that mean the same for sound files and timelines, as they were given.
struct RenderOptions
{
	std::string mOutput;
	std::string mFormat;
	std::string mBits;
	std::string mDither;
	std::string mLayout;
	std::optional<int> mSampleRate;
	std::optional<unsigned> mBlockFrames;
	bool mKeepsOldFile = false;
	bool mIsQuiet = false;
	bool mAsJson = false;

	// These throw a HostError for what makes no sense.
	SonaroHost::OutputContainer ChooseContainer() const;
	std::optional<SonaroHost::OutputSamples> GetSamples() const;
	std::optional<SonaroHost::Dither> GetDither() const;
	std::optional<SN::AudioChannelLayout> ParseLayout() const;
};

} // namespace SonaroCommand
