#pragma once

#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/OtioSequence/TimelineRange.h"
#include "SonaroHost/Render/Programme.h"
#include "SonaroHost/Render/RenderSummary.h"
#include "SonaroHost/Render/TimelineRenderRequest.h"

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace SonaroHost
{
struct PlannedFile;
struct RenderPlan;
} // namespace SonaroHost

namespace SonaroHost::Otio
{

// Renders a timeline into sound files.
//
// Passes  Normalizing renders the mix once more before, into a meter: that takes time instead of room on the disk, and
//         both passes have the same samples. With a limiter, which makes the mix softer, it is repeated until the
//         loudness is right to 0.02 LU, at most six times.
// Range   Its samples are those of the whole render, where nothing of what came before rings on.
class TimelineRenderJob
{
public:
	// Opens the timeline and checks the request against it. Throws a HostError.
	explicit TimelineRenderJob(TimelineRenderRequest inRequest);
	~TimelineRenderJob();
	TimelineRenderJob(TimelineRenderJob const&) = delete;
	TimelineRenderJob& operator=(TimelineRenderJob const&) = delete;

	// See TimelineRenderRequest::mKeepsRows.
	TimelineSequence const& GetSequence() const { return mSequence; }
	// Notes of reading and laying out, and of the range.
	std::vector<Note> const& GetNotes() const { return mNotes; }
	// Notes of the range alone: how it was understood.
	std::vector<Note> const& GetRangeNotes() const { return mRangeNotes; }
	// What is rendered of the programme, in its frames.
	ProgrammeRange const& GetRange() const { return mRange; }
	// The container and the samples of what is written.
	OutputFormat const& GetOutputFormat() const { return mFormat; }
	// The channels of what is written.
	SN::AudioChannelLayout const& GetOutputLayout() const { return mSequence.mLayout; }
	// Frames a second of what is written, in Hz.
	int GetSampleRate() const { return mSequence.mSampleRate; }

	// What is rendered, for those who render parts of it; this outlives it. After Run there is none.
	Programme OpenProgramme() const;

	// Renders on the calling thread and as many as the request allows, with progress after each block. Nothing when asked to stop, or throwing a
	// HostError: then there is no output, and files that were there before stay. Several files appear together once all
	// are complete. To be called once.
	std::optional<RenderSummary> Run(
		ProgressCallback const& inProgress = {}, std::stop_token const& inStop = {});

private:
	void ChooseRange();
	void PlanStems();
	void PlanFile(std::string const& inName, ProgrammeRange const& inRange, std::string const& inOnlyTrack);
	void NameStems();
	void CheckFiles() const;
	RenderPlan MakePlan() const;

	TimelineRenderRequest mRequest;
	TimelineInput mInput;
	TimelineSequence mSequence;
	std::vector<Note> mNotes;
	std::vector<Note> mRangeNotes;
	ProgrammeRange mRange;
	OutputFormat mFormat;
	std::vector<PlannedFile> mFiles;
};

} // namespace SonaroHost::Otio
