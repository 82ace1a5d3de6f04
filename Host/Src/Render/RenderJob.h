#pragma once

#include "RangeRender.h"
#include "RenderOutput.h"
#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/Render/OutputRequest.h"
#include "SonaroHost/Render/RenderSummary.h"
#include "TrackMeters.h"

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace SonaroHost
{

// A file of a plan.
struct PlannedFile
{
	RenderedFile mFile;
	// The outermost track that is heard alone, by its mOrigin; empty for all.
	std::string mOnlyTrack;
};

// What a request comes to, whatever its programme was made from.
struct RenderPlan
{
	// The request, for what every kind of render takes from it.
	OutputRequest mRequest;
	OutputFormat mFormat;
	// Passes that write read their media ahead, as a player does.
	bool mReadsAhead = false;
	// Zeros of the graph lose their signs, which a resampler's blocks would show.
	bool mDropsSignsOfZeros = false;
	// The mix, which is measured where loudness is to be found.
	RenderedFile mMix;
	// What is written: the mix itself, or stems; empty where it is only measured.
	std::vector<PlannedFile> mFiles;
	bool mWritesMix = true;
	// The tracks that are measured when tracks are, as the summary has them.
	std::vector<PlannedTrack> mTracks;
	// The mOrigins of all outermost tracks, where one may be heard alone.
	std::vector<std::string> mOutermostTracks;
};

// Renders a programme into files, from the start again where the latency of an effect grows. Nothing when asked to stop;
// otherwise all files have got their names. Throws a HostError: then none has.
std::optional<RenderSummary> RenderFiles(Programme const& inProgramme, RenderPlan const& inPlan,
	ProgressCallback const& inProgress, std::stop_token const& inStop);

// Renders a programme into files: which passes it takes, one after the other.
// TimelineRenderJob says which.
class RenderJob
{
public:
	RenderJob(Programme inProgramme, RenderPlan inPlan, ProgressCallback inProgress, std::stop_token inStop);

	// Called once. Nothing when asked to stop. Otherwise all files have got their names, after the last was complete.
	// Throws a HostError, or a LatencyGrowth: then none has.
	std::optional<RenderSummary> Run();

private:
	// One run over what goes into a file, or over the mix.
	struct Pass
	{
		RenderOutput& mOutput;
		// The outermost track that is heard alone; empty for all.
		std::string mOnlyTrack;
		// Each track is to be measured meanwhile.
		bool mMeasuresTracks = false;
		// It does not only measure.
		bool mWrites = true;
	};

	// Each of them is false when asked to stop.
	bool RunPasses();
	bool LearnNoise();
	bool AddTail();
	bool MeasureMix();
	bool Normalize();
	bool WriteFiles();
	bool Render(Pass const& inPass);

	TrackMeters MakeMeters(Pass const& inPass) const;
	RangeRender MakeRange(ProgrammeRange const& inRange) const;
	// A block of the graph, in which it works.
	void TakeBlock(Pass const& inPass, dsp::AudioBuffer& ioBlock);

	bool NeedsMixAlone() const;
	bool MeasuresTracks() const { return mPlan.mRequest.mMeasuring == Measuring::kTracks; }
	void TakeReport(Pass const& inPass, Sequence::GraphReport inReport);
	Sequence::GraphView MakeView(Pass const& inPass, TrackMeters const& inMeters) const;
	// The setup of a pass that only measures the mix.
	RenderOutput::Setup MakeMeasuringSetup() const;

	Programme mProgramme;
	RenderPlan mPlan;
	ProgressCallback mReport;
	std::stop_token mStop;
	RenderOutput::Setup mSetup;
	RenderSummary mSummary;
	RenderProgress mProgress;
};

} // namespace SonaroHost
