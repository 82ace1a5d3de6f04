#pragma once

#include "../RenderPasses.h"
#include "SonaroHost/Otio/TimelineInput.h"
#include "SonaroHost/Otio/TimelineRenderJob.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace SonaroHost::Otio
{

// Renders passes over a timeline, and keeps what they find of its tracks.
class TimelineRenderer
{
public:
	struct Frames
	{
		// Of the programme, within the description.
		std::int64_t mFirst = 0;
		unsigned mOfBlock = 0;
	};

	// inOptions: of the mix, with rate and layout.
	TimelineRenderer(
		TimelineInput& ioInput, TimelineOptions inOptions, Frames inFrames, std::stop_token inStop);

	// As RenderPasses::Renderer has it.
	bool Render(RenderPass const& inPass, RenderPasses::Sink const& inSink);

	// Adds what TimelineRenderSummary has beside the files, except for the time that it took.
	void Describe(TimelineRenderSummary& ioSummary) const;

private:
	TimelineInput& mInput;
	TimelineOptions mOptions;
	Frames mFrames;
	std::stop_token mStop;
	std::vector<std::optional<LoudnessReading>> mTracks;
	Sequence::GraphReport mGraph;
};

} // namespace SonaroHost::Otio
