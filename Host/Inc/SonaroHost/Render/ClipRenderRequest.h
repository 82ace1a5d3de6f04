#pragma once

#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Binaural/Listener.h"
#include "SonaroHost/Effects/EffectSetup.h"
#include "SonaroHost/Engine/LayoutPlan.h"
#include "SonaroHost/Engine/OfflineRender.h"
#include "SonaroHost/Media/Stretch.h"
#include "SonaroHost/Offline/Denoise.h"
#include "SonaroHost/Render/OutputRequest.h"
#include "SonaroHost/Sequence/Resampling.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace SonaroHost
{

// The speeds that a render or a waveform may be asked for.
inline constexpr double kLowestSpeed = 0.01;
inline constexpr double kHighestSpeed = 100.0;

// The sample rates that an output may be asked for; and speed times input rate by output rate stays within
// the range of speeds.
inline constexpr int kLowestSampleRate = 1000;
inline constexpr int kHighestSampleRate = 768000;

// How long an output may get: as long as a sequence.
inline constexpr int kMostHours = 50;

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
	// Which audio stream of a movie, from 1; 0 for all, one after the other.
	unsigned mStream = 0;
};

// The reduction of the noise of inputs.
struct NoiseReduction
{
	// See Denoise.
	double mReduction = Denoise().mReduction;
	// Where the noise is learned, for a single input: from a time in the file to another; without it, from the quietest
	// stretches of each.
	struct Range
	{
		TimePosition mStart;
		TimePosition mEnd;
	};
	std::optional<Range> mLearn;
};

// Sound files to be rendered into another, one after the other or wherever they are put. There are no tracks to
// measure, so kTracks means the output.
struct ClipRenderRequest : OutputRequest
{
	// One input or more. Where they overlap, the later one in this list is heard alone.
	std::vector<ClipInput> mInputs;
	// What the inputs become: without a layout, the widest of theirs. A mixdown holds for those of 5.1.
	LayoutRequest mLayout;
	// The direction of the whole programme, as the speed is its speed.
	RenderDirection mDirection = RenderDirection::kForward;
	// Resampled, so that pitch follows, unless it is kept; at 1 nothing is.
	double mSpeed = 1.0;
	// Whether the inputs are stretched instead; the speed is then limited as in a Stretch.
	bool mKeepsPitch = false;
	// By how much the pitch is shifted besides, length staying: at most Stretch::kMostSemitones either way.
	double mSemitones = 0.0;
	StretchEngine mStretchEngine = kDefaultStretchEngine;
	// How the noise of the inputs is reduced, before all else; nothing leaves it as it is.
	std::optional<NoiseReduction> mNoiseReduction;
	// The output's rate; without one it is that of the first input. Inputs of another rate are resampled, pitch and
	// length staying.
	std::optional<int> mSampleRate;
	Sequence::Resampling mResampling = Sequence::Resampling::kExact;
	// The whole runs through them, in their order.
	std::vector<Effects::EffectSetup> mEffects;
	// Who hears all that with two ears, so that the output is stereo and mLayout the one around the listener.
	std::optional<Listener> mListener;
	// Reads the inputs ahead on another thread, as a player does; the samples are the same.
	bool mAsPlayback = false;
};

} // namespace SonaroHost
