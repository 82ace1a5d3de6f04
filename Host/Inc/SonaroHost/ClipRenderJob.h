#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Types.h"
#include "SonaroHost/AudioFileInfo.h"
#include "SonaroHost/AudioFileSource.h"
#include "SonaroHost/Fades.h"
#include "SonaroHost/LayoutPlan.h"
#include "SonaroHost/LoudnessMeter.h"
#include "SonaroHost/OfflineRender.h"
#include "SonaroHost/OutputFormat.h"
#include "SonaroHost/ReadAhead.h"
#include "SonaroHost/RenderProgress.h"
#include "SonaroHost/TimePosition.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
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

// One sound file to be rendered into another.
struct ClipRenderRequest
{
	std::filesystem::path mInput;
	std::filesystem::path mOutput;
	OutputContainer mContainer = OutputContainer::eWav;
	// Without these, GetDefaultSamples and ChooseDither decide.
	std::optional<OutputSamples> mSamples;
	std::optional<Dither> mDither;

	TimePosition mStart;
	// At most to the input's end, which is where it ends without one.
	std::optional<TimePosition> mDuration;
	// Channels of the input from 0 on, in the order of the output; empty for all.
	std::vector<unsigned> mChannels;
	// What those become.
	LayoutRequest mLayout;
	// Linear; at 1, samples pass bit for bit.
	float mGain = 1.0f;
	RenderDirection mDirection = RenderDirection::eForward;
	// Resampled, so that pitch follows; at 1 nothing is.
	double mSpeed = 1.0;
	// Of the output, without one that of the input. Resampled, pitch and length staying.
	std::optional<int> mSampleRate;
	// From silence at the output's start, and to silence at its end. Together at most as long as the output.
	std::optional<TimePosition> mFadeIn;
	std::optional<TimePosition> mFadeOut;
	unsigned mBlockFrames = 4096;
	// Reads the input ahead on another thread, as a player does; the samples are the same.
	bool mAsPlayback = false;
	// Measures loudness and true peak of the output where the rate allows it, which takes longer than many a
	// render itself.
	bool mMeasureLoudness = false;
	// Whether an older file of the output's name may be replaced.
	bool mReplace = true;
};

struct PlaybackSummary
{
	ReadAheadReport mReadAhead;
	// Reads that found nothing, and the input's samples that are silent instead.
	std::uint64_t mMisses = 0;
	std::uint64_t mMissedFrames = 0;
};

struct RenderSummary
{
	std::int64_t mFrames = 0;
	unsigned mChannels = 0;
	int mSampleRate = 0;
	OutputFormat mFormat;
	// Of the samples before rounding; linear, 1 being full scale.
	float mPeak = 0.0f;
	std::int64_t mClippedSamples = 0;
	// What the render took by the clock.
	double mElapsedSeconds = 0.0;
	// Of the samples before rounding, when it was asked for and can be measured.
	std::optional<LoudnessReading> mLoudness;
	// Of a render as playback.
	std::optional<PlaybackSummary> mPlayback;
};

// Renders a file through a clip of the engine.
class ClipRenderJob
{
public:
	// Opens the input and checks the request against it. Throws a HostError.
	explicit ClipRenderJob(ClipRenderRequest inRequest);

	AudioFileInfo const& GetInputInfo() const { return mSource->GetInfo(); }
	// What the output will be.
	OutputFormat const& GetOutputFormat() const { return mFormat; }
	SN::AudioChannelLayout const& GetOutputLayout() const { return mPlan.GetOutputLayout(); }
	std::int64_t GetFrames() const { return mOutputFrames; }
	int GetSampleRate() const { return mRequest.mSampleRate.value_or(GetInputInfo().mSampleRate); }

	// Renders on the calling thread, with progress after each block. Nothing when asked to stop, or throwing a HostError: then there is no
	// output, and a file that was there before stays. To be called once.
	std::optional<RenderSummary> Run(
		ProgressCallback const& inProgress = {}, std::stop_token const& inStop = {});

private:
	// Throws a HostError when the input could not be read.
	void CheckSource() const;
	OfflineRange MakeRange() const;
	// What of the summary is known beforehand.
	RenderSummary DescribeOutput() const;
	SN::AudioChannelLayout ChooseChannels();
	// Samples of the input for one of the output.
	double GetReadingSpeed() const;
	void ChooseLength();
	void ChooseFades();
	// Whether the clip lies on a track; without need it is rendered by itself.
	bool NeedsTrack() const
	{
		return !mFades.IsNone() || mRequest.mSpeed != 1.0 || GetSampleRate() != GetInputInfo().mSampleRate;
	}
	void ChooseFormat();
	SN::InterfaceRef<SN::IAudioGenerator> MakeGraph(
		SN::InterfaceRef<SN::IAudioRenderContext> const& inContext);
	SN::InterfaceRef<SN::IAudioGenerator> MakeClip(
		SN::InterfaceRef<SN::IAudioRenderContext> const& inContext);

	ClipRenderRequest mRequest;
	SN::InterfaceRef<AudioFileSource> mSource;
	// From the clip to the output.
	LayoutPlan mPlan;
	OutputFormat mFormat;
	Fades mFades;
	// In the input.
	std::int64_t mFirstFrame = 0;
	std::int64_t mFrames = 0;
	std::int64_t mOutputFrames = 0;
};

} // namespace SonaroHost
