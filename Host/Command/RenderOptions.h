#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Render/OutputLevels.h"

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
	double mGainDecibels = 0.0;
	std::string mFadeIn;
	std::string mFadeOut;
	SonaroHost::OutputLevels mLevels;
	std::string mReport;
	bool mKeepsOldFile = false;
	bool mIsQuiet = false;
	bool mAsJson = false;

	// These throw a HostError for what makes no sense.
	SonaroHost::OutputContainer ChooseContainer() const;
	std::optional<SonaroHost::OutputSamples> GetSamples() const;
	std::optional<SonaroHost::Dither> GetDither() const;
	std::optional<SN::AudioChannelLayout> ParseLayout() const;
	// The gain as a linear factor.
	float GetGain() const;
	std::optional<SonaroHost::TimePosition> ParseFadeIn() const;
	std::optional<SonaroHost::TimePosition> ParseFadeOut() const;

	// What is shown or written of it.
	SonaroHost::Measuring GetMeasuring() const;
};

} // namespace SonaroCommand
