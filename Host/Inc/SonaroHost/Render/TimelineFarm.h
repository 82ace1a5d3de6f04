#pragma once

#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/Render/FarmPlan.h"
#include "SonaroHost/Render/TimelineRenderJob.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

// One render of a timeline by several processes: planned by one, rendered in pieces by any number, joined by one.
namespace SonaroHost::Otio
{

// Where a timeline lies for processes in other folders, and what shows that it is the same: a digest of its JSON, or, for
// an archive, of its ends and its time.
FileFingerprint TakeTimelineFingerprint(std::filesystem::path const& inPath);

// What a plan is asked for.
struct FarmRequest
{
	// At most.
	std::size_t mPieces = 1;
	// Whether reports of tracks are to be possible.
	bool mHasTracks = false;
	// See FarmPlan.
	std::string mProgram;
	FarmPlan::Options mOptions;
};

// Throws a HostError for a render that cannot be planned: of stems, or with a tail whose length shows when it is rendered.
void CheckCanPlan(TimelineRenderRequest const& inRender);

// Cuts the render of a timeline into pieces. inJob: of inRender, which passes CheckCanPlan. Throws a HostError.
FarmPlan PlanFarm(
	TimelineRenderJob const& inJob, TimelineRenderRequest const& inRender, FarmRequest const& inRequest);

// Throws a HostError where the timeline or its media are not what they were when the render was planned, effects are
// missing that were there, or another program is to do its part. inJob: of inRender.
void CheckPlan(FarmPlan const& inPlan, TimelineRenderRequest const& inRender, TimelineRenderJob const& inJob,
	std::string const& inProgram);

// All pieces of a plan. See PieceSet.
std::shared_ptr<Farm::PieceSet const> OpenPieces(
	FarmPlan const& inPlan, std::vector<std::filesystem::path> const& inPaths);

// The files of pieces, those that are there twice too.
std::vector<std::filesystem::path> const& ListPieceFiles(Farm::PieceSet const& inPieces);

// What the render of a piece came to.
struct PieceSummary
{
	// The frames of the programme that are in the piece.
	ProgrammeRange mRange;
	// What the piece took by the clock.
	double mElapsedSeconds = 0.0;
};

// Renders a piece of a plan into a file.
class TimelinePieceJob
{
public:
	// inRender: the planned render, whose output and number of threads are those of the piece. inNumber: from 1 on. Opens the
	// timeline, and checks it against the plan. Throws a HostError.
	TimelinePieceJob(
		TimelineRenderRequest inRender, FarmPlan inPlan, std::size_t inNumber, std::string const& inProgram);

	// Frames a second of the render, in Hz.
	int GetSampleRate() const { return mPlan.mSampleRate; }
	// The render of which this is a piece.
	TimelineRenderJob const& GetJob() const { return *mJob; }

	// The same as that of TimelineRenderJob.
	std::optional<PieceSummary> Run(
		ProgressCallback const& inProgress = {}, std::stop_token const& inStop = {});

private:
	FarmPiece const& GetPiece() const { return mPlan.mPieces[mNumber - 1]; }
	std::vector<std::string> ListTaps() const;

	TimelineRenderRequest mRender;
	FarmPlan mPlan;
	std::size_t mNumber;
	std::unique_ptr<TimelineRenderJob> mJob;
};

} // namespace SonaroHost::Otio
