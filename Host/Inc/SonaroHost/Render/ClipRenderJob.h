#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/Effects/PreparedEffect.h"
#include "SonaroHost/Render/ClipRenderRequest.h"
#include "SonaroHost/Render/ProgrammePlan.h"
#include "SonaroHost/Render/RenderSummary.h"
#include "SonaroHost/Sequence/Description.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace SonaroHost
{

// Renders sound files as the items of a sequence with one track, in as many passes as a TimelineRenderJob.
class ClipRenderJob
{
public:
	// Opens the inputs and checks the request against them. Throws a HostError.
	explicit ClipRenderJob(ClipRenderRequest inRequest);

	// What of the inputs lies where.
	ProgrammePlan const& GetPlan() const { return mPlan; }
	// What the output will be.
	OutputFormat const& GetOutputFormat() const { return mFormat; }
	SN::AudioChannelLayout GetOutputLayout() const;
	// Who hears the mix with two ears, and its layout.
	std::optional<Sequence::BinauralOutput> GetBinaural() const;
	// How long the output is, in its frames.
	std::int64_t GetFrames() const { return mPlan.GetFrames(); }
	// Frames a second of the output, in Hz.
	int GetSampleRate() const { return mPlan.GetSampleRate(); }

	// What was changed of the request, as settings of effects that were out of range.
	std::vector<std::string> const& GetRemarks() const { return mRemarks; }

	// Renders on the calling thread and as many as the request allows, with progress after each block. Nothing when asked to stop, or throwing a
	// HostError: then there is no output, and a file that was there before stays. To be called once.
	std::optional<RenderSummary> Run(
		ProgressCallback const& inProgress = {}, std::stop_token const& inStop = {});

private:
	ClipRenderRequest mRequest;
	ProgrammePlan mPlan;
	OutputFormat mFormat;
	std::vector<Effects::PreparedEffect> mEffects;
	std::vector<std::string> mRemarks;
};

} // namespace SonaroHost
