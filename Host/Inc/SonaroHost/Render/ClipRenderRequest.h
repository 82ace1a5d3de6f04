#pragma once

#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Engine/LayoutPlan.h"
#include "SonaroHost/Engine/OfflineRender.h"
#include "SonaroHost/Render/OutputLevels.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace SonaroHost
{

// The largest block that a render may be asked for, in frames.
inline constexpr unsigned kMaxBlockFrames = 262144;

// The speeds that a render may be asked for.
inline constexpr double kLowestSpeed = 0.01;
inline constexpr double kHighestSpeed = 100.0;

// The sample rates that an output may be asked for; and speed times input rate by output rate stays within
// the range of speeds.
inline constexpr int kLowestSampleRate = 1000;
inline constexpr int kHighestSampleRate = 768000;

// The longest output.
inline constexpr int kMostHours = 1000;

// A sound file, or a part of one, in a programme.
struct ClipInput
{
	// "-" for the standard input.
	std::filesystem::path mPath;
	// The start in the file.
	TimePosition mStart = {};
	// The length, at most to the file's end, which is where it ends without one.
	std::optional<TimePosition> mDuration = std::nullopt;
	// Channels of the file from 0 on, in a new order; empty for all.
	std::vector<unsigned> mChannels = {};
	// The place in the programme at the speed 1, in seconds or in samples of the output; without one, where the input
	// before ends.
	std::optional<TimePosition> mPosition = std::nullopt;
};

// Sound files to be rendered into another, one after the other or wherever they are put.
struct ClipRenderRequest
{
	// One input or more. Where they overlap, the later one in this list is heard alone.
	std::vector<ClipInput> mInputs;
	// A file, or "-" for the standard output.
	std::filesystem::path mOutput;
	// What the caller writes besides, such as a report: checked together with the output.
	std::vector<std::filesystem::path> mOtherOutputs = {};
	OutputContainer mContainer = OutputContainer::eWav;
	// Without these, GetDefaultSamples and ChooseDither decide.
	std::optional<OutputSamples> mSamples;
	std::optional<Dither> mDither;

	// What the inputs become: without a layout, the widest of theirs. A mixdown holds for those of 5.1.
	LayoutRequest mLayout;
	// Linear; at 1, samples pass bit for bit.
	float mGain = 1.0f;
	OutputLevels mLevels;
	// The direction of the whole programme, as the speed is its speed.
	RenderDirection mDirection = RenderDirection::eForward;
	// Resampled, so that pitch follows; at 1 nothing is.
	double mSpeed = 1.0;
	// The output's rate; without one it is that of the first input. Inputs of another rate are resampled, pitch and
	// length staying.
	std::optional<int> mSampleRate;
	// Times of the fades from silence at the output's start and to silence at its end. Together at most as long as the output.
	std::optional<TimePosition> mFadeIn;
	std::optional<TimePosition> mFadeOut;
	unsigned mBlockFrames = 4096;
	// Reads the inputs ahead on another thread, as a player does; the samples are the same.
	bool mAsPlayback = false;
	// There are no tracks to measure, so eTracks means the output.
	Measuring mMeasuring = Measuring::eNothing;
	// Whether older files of the outputs' names may be replaced.
	bool mReplace = true;
};

} // namespace SonaroHost
