#pragma once

#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"
#include "SonaroHost/Render/OutputLevels.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// How the programme is cut into files.
enum class Stems
{
	// Into one.
	eNone,
	// One for each child of the timeline that is heard. Without limiting and effects of the sum they add up to the mix.
	eTracks,
	// One for each marker, of the mix; a point names all up to the next one.
	eMarkers,
};

// A timeline that is to be rendered into sound files.
struct TimelineRenderRequest
{
	std::filesystem::path mInput;
	std::vector<std::filesystem::path> mMediaFolders;
	// The file, or "-" for the standard output; of stems the folder, which is made where there is none, with the folders
	// above it.
	std::filesystem::path mOutput;
	// What the caller writes besides, such as a report: checked together with the outputs.
	std::vector<std::filesystem::path> mOtherOutputs;
	OutputContainer mContainer = OutputContainer::eWav;
	// Without these, GetDefaultSamples and ChooseDither decide.
	std::optional<OutputSamples> mSamples;
	std::optional<Dither> mDither;

	// The same as in TimelineOptions.
	std::optional<int> mSampleRate;
	std::optional<SN::AudioChannelLayout> mLayout;
	FadeShape mFadeShape = FadeShape::eEqualPower;

	// The range as FindRange reads it; empty for all.
	std::string mRange;
	Stems mStems = Stems::eNone;
	// Linear, of each file alike; at 1, samples pass bit for bit.
	float mGain = 1.0f;
	// Times of the fades from silence at the start of each file and to silence at its end; together at most as long as the file.
	std::optional<TimePosition> mFadeIn;
	std::optional<TimePosition> mFadeOut;
	OutputLevels mLevels;

	Measuring mMeasuring = Measuring::eNothing;
	// Whether the job's sequence keeps its rows of tracks and clips when it runs, for a report. Measuring tracks keeps
	// them anyway.
	bool mKeepsRows = true;
	// Whether older files of the outputs' names may be replaced, the other outputs' too.
	bool mReplace = true;
	// More costs memory and gains nothing.
	unsigned mBlockFrames = 4096;
};

} // namespace SonaroHost::Otio
