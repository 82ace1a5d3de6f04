#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/Engine/ReadAhead.h"
#include "SonaroHost/Render/ClipRenderRequest.h"
#include "SonaroHost/Render/ProgrammePlan.h"
#include "SonaroHost/Render/RenderedFile.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace SonaroHost
{

struct RenderPlan;

struct PlaybackSummary
{
	ReadAheadReport mReadAhead;
	// Reads that found nothing, and the inputs' samples that are silent instead.
	std::uint64_t mMisses = 0;
	std::uint64_t mMissedFrames = 0;
	// Those samples, for each input.
	std::vector<std::uint64_t> mMissedFramesOfInputs;
};

// What became of the one file of the output.
struct RenderSummary : RenderedFiles
{
	unsigned mChannels = 0;
	int mSampleRate = 0;
	// What the render took by the clock.
	double mElapsedSeconds = 0.0;
	// What the reading ahead of a render as playback came to.
	std::optional<PlaybackSummary> mPlayback;

	RenderedFile const& GetFile() const { return mFiles.front(); }
	std::int64_t GetFrames() const { return GetFile().mRange.mFrames; }
};

// Renders files as the clips of a track of the engine, in as many passes as a TimelineRenderJob.
class ClipRenderJob
{
public:
	// Opens the inputs and checks the request against them. Throws a HostError.
	explicit ClipRenderJob(ClipRenderRequest inRequest);

	// What of the inputs lies where.
	ProgrammePlan const& GetPlan() const { return mPlan; }
	// What the output will be.
	OutputFormat const& GetOutputFormat() const { return mFormat; }
	SN::AudioChannelLayout const& GetOutputLayout() const { return mPlan.GetLayout(); }
	std::int64_t GetFrames() const { return mPlan.GetFrames(); }
	int GetSampleRate() const { return mPlan.GetSampleRate(); }

	// Renders on the calling thread, with progress after each block. Nothing when asked to stop, or throwing a
	// HostError: then there is no output, and a file that was there before stays. To be called once.
	std::optional<RenderSummary> Run(
		ProgressCallback const& inProgress = {}, std::stop_token const& inStop = {});

private:
	RenderPlan MakePlan() const;
	OutputFormat ChooseFormat() const;

	ClipRenderRequest mRequest;
	ProgrammePlan mPlan;
	OutputFormat mFormat;
};

} // namespace SonaroHost
