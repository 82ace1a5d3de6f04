#pragma once

#include "Render/RenderPasses.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "TrackMeters.h"

#include <optional>
#include <stop_token>
#include <vector>

namespace SonaroHost::Otio
{

// Renders passes over a timeline, and keeps what they find of its tracks.
class TimelineRenderer
{
public:
	// inMix: laid out with inOptions, which have its rate and layout. Passes with fades, meters of tracks or one track
	// alone lay it out anew. Both inputs outlive this.
	TimelineRenderer(TimelineInput& ioInput, TimelineSequence const& inMix, TimelineOptions inOptions,
		unsigned inBlockFrames, std::stop_token inStop);

	// Whether the mix is all that such a pass needs.
	static bool IsMix(RenderedFile const& inFile, bool inMeasuresTracks);

	// Works as RenderPasses::Renderer says.
	bool Render(RenderPass const& inPass, RenderPasses::Sink const& inSink);

	// Adds what TimelineRenderSummary has beside the files, except for the time that it took.
	void Describe(TimelineRenderSummary& ioSummary) const;

private:
	TimelineOptions MakeOptions(RenderPass const& inPass, TrackMeters& ioMeters) const;

	TimelineInput& mInput;
	TimelineSequence const& mMix;
	TimelineOptions mOptions;
	unsigned mBlockFrames;
	std::stop_token mStop;
	std::vector<std::optional<LoudnessReading>> mTracks;
	Sequence::GraphReport mGraph;
};

} // namespace SonaroHost::Otio
