#include "PlayedInput.h"

#include "Report/TimelineNotes.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Files/OutputPlan.h"
#include "SonaroHost/OtioSequence/TimelineRange.h"
#include "SonaroHost/Render/ClipProgramme.h"
#include "SonaroHost/Render/ProgrammePlan.h"
#include "SonaroHost/Render/TimelineProgramme.h"
#include "Terminal/Console.h"

#include <algorithm>

namespace SonaroCommand
{

using namespace SonaroHost;
using namespace SonaroHost::Otio;

namespace
{

constexpr char const* kTimes = "use START..END with times like 12.5, 1:02.5 or 48000s";

std::int64_t ParseFrame(std::string const& inText, Programme const& inProgramme)
{
	auto const time = TimePosition::Parse(inText);
	if (!time)
	{
		Refuse("'" + inText +
			   "' is not a time; use seconds (12.5), minutes (1:02.5), hours (1:00:02.5) or "
			   "samples (48000s)");
	}
	return std::min(time->ToSamples(inProgramme.mSampleRate), inProgramme.mFrames);
}

} // namespace

bool PlayRequest::IsTimeline() const
{
	return IsTimelinePath(mInput);
}

PlayedInput::PlayedInput(PlayRequest const& inRequest, Warnings inWarnings)
{
	if (inRequest.IsTimeline())
	{
		OpenTimeline(inRequest, inWarnings);
	}
	else
	{
		OpenFile(inRequest);
	}
	if (!inRequest.mOutput.empty())
	{
		auto const media = mTimeline ? mTimeline->ListMedia() : std::vector<std::filesystem::path>();
		OutputPlan{{inRequest.mOutput}, {}, {inRequest.mInput}, media}.Check();
	}
}

void PlayedInput::OpenTimeline(PlayRequest const& inRequest, Warnings inWarnings)
{
	mTimeline = std::make_unique<TimelineInput>(inRequest.mInput, inRequest.mMediaFolders);
	mSequence = mTimeline->MakeSequence(inRequest.mTimeline);
	std::vector<Note> notes = mTimeline->GetNotes();
	notes.insert(notes.end(), mSequence.mNotes.begin(), mSequence.mNotes.end());
	if (inWarnings == Warnings::kPrint)
	{
		WarnOfNotes(mSequence.mMissing, notes);
	}
	CheckHasSound(mSequence);
	mIsIncomplete = !mSequence.mMissing.empty() || !ListMissingEffects(notes).empty();
	mTimecode = ProgrammeTimecode::Find(mTimeline->GetTimeline(), mSequence);
	mProgramme = MakeProgramme(mSequence, mTimeline->GetMedia());
}

void PlayedInput::OpenFile(PlayRequest const& inRequest)
{
	ClipRenderRequest request;
	ClipInput input;
	input.mPath = inRequest.mInput;
	input.mStream = inRequest.mStream;
	request.mInputs.push_back(input);
	request.mSampleRate = inRequest.mTimeline.mSampleRate;
	request.mLayout.mLayout = inRequest.mTimeline.mLayout;
	request.mListener = inRequest.mTimeline.mListener;
	mProgramme = MakeProgramme(ProgrammePlan(request));
}

std::int64_t PlayedInput::FindStart(std::string const& inText) const
{
	return mTimeline ? FindRange(inText + "..", mTimeline->GetTimeline(), mSequence).mRange.mFirstFrame
					 : ParseFrame(inText, mProgramme);
}

ProgrammeRange PlayedInput::FindLoop(std::string const& inText) const
{
	if (mTimeline)
	{
		return FindRange(inText, mTimeline->GetTimeline(), mSequence).mRange;
	}
	std::size_t const dots = inText.find("..");
	if (dots == std::string::npos)
	{
		Refuse("--loop: '" + inText + "' is not a range; " + kTimes);
	}
	std::string const end = inText.substr(dots + 2);
	std::int64_t const first = dots > 0 ? ParseFrame(inText.substr(0, dots), mProgramme) : 0;
	std::int64_t const last = end.empty() ? mProgramme.mFrames : ParseFrame(end, mProgramme);
	if (first >= last)
	{
		Refuse("--loop: '" + inText + "' has no length; " + kTimes);
	}
	return {first, last - first};
}

std::string PlayedInput::FormatPlace(std::int64_t inFrame) const
{
	return mTimecode ? mTimecode->GetLabel(Ratio(inFrame, mProgramme.mSampleRate))
					 : FormatTime(inFrame, mProgramme.mSampleRate);
}

} // namespace SonaroCommand
