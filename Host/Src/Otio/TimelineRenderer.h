#pragma once

#include "../RenderPasses.h"
#include "SonaroHost/Otio/TimelineInput.h"
#include "SonaroHost/Otio/TimelineRenderJob.h"

#include <stop_token>

namespace SonaroHost::Otio
{

// Renders passes over a timeline, and keeps what they find of its tracks.
class TimelineRenderer
{
public:
	// inOptions: of the mix, with rate and layout.
	TimelineRenderer(
		TimelineInput& ioInput, TimelineOptions inOptions, unsigned inBlockFrames, std::stop_token inStop);

	// As RenderPasses::Renderer has it.
	bool Render(RenderPass const& inPass, RenderPasses::Sink const& inSink);

	// Adds what TimelineRenderSummary has beside the files, except for the time that it took.
	void Describe(TimelineRenderSummary& ioSummary) const;

private:
	TimelineInput& mInput;
	TimelineOptions mOptions;
	unsigned mBlockFrames;
	std::stop_token mStop;
	std::vector<std::optional<LoudnessReading>> mTracks;
	Sequence::GraphReport mGraph;
};

} // namespace SonaroHost::Otio
