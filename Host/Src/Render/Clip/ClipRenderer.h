#pragma once

#include "Render/RenderPasses.h"
#include "SonaroHost/Render/ClipRenderJob.h"

#include <optional>
#include <stop_token>

namespace SonaroHost
{

// Renders passes over sound files. Those that are written may be rendered as playback.
class ClipRenderer
{
public:
	// Both are to live on.
	ClipRenderer(ClipRenderRequest const& inRequest, ProgrammePlan const& inPlan, std::stop_token inStop);

	// Works as RenderPasses::Renderer says.
	bool Render(RenderPass const& inPass, RenderPasses::Sink const& inSink);

	// The summary of the pass as playback, if there was one.
	std::optional<PlaybackSummary> const& GetPlayback() const { return mPlayback; }

private:
	OfflineRange MakeRange() const;
	// Throws a HostError when an input could not be read.
	void CheckSources() const;
	PlaybackSummary DescribePlayback(ReadAhead& ioReadAhead) const;

	ClipRenderRequest const& mRequest;
	ProgrammePlan const& mPlan;
	std::stop_token mStop;
	std::optional<PlaybackSummary> mPlayback;
};

} // namespace SonaroHost
