#pragma once

#include "SonaroHost/Otio/TimelineInput.h"
#include "SonaroHost/Otio/TimelineRenderJob.h"
#include "TimelineOutput.h"
#include "TimelinePass.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace SonaroHost::Otio
{

// The work of a TimelineRenderJob: which passes over the timeline it takes, one after the other.
class RenderPasses
{
public:
	struct Caller
	{
		ProgressCallback mProgress;
		std::stop_token mStop;
	};

	// inOptions: of the mix, with rate and layout.
	RenderPasses(TimelineRenderRequest const& inRequest, TimelineInput& ioInput, TimelineOptions inOptions,
		ProgrammeRange const& inRange, OutputFormat const& inFormat, Caller inCaller);

	// Nothing when asked to stop.
	std::optional<TimelineRenderSummary> Run(std::vector<RenderedFile> const& inFiles);

private:
	enum class Tracks
	{
		eMeasured,
		eUnheard,
	};

	// Each of them is false when asked to stop.
	bool MeasureMix();
	bool Normalize();
	bool WriteFiles(std::vector<RenderedFile> const& inFiles);
	// One pass over one file, or over the mix where it only measures.
	bool Render(TimelineOutput& ioOutput, Tracks inTracks);

	bool NeedsMixAlone() const;
	RenderedFile DescribeMix() const;
	bool MeasuresTracks() const { return mRequest.mMeasuring == Measuring::eTracks; }

	TimelineRenderRequest const& mRequest;
	TimelineInput& mInput;
	TimelineOptions mOptions;
	ProgrammeRange mRange;
	Caller mCaller;
	TimelineOutput::Setup mSetup;
	TimelineRenderSummary mSummary;
	RenderProgress mProgress;
};

} // namespace SonaroHost::Otio
