#include "SonaroHost/Render/TimelineFarm.h"

#include "Render/Effect/LatencyGrowth.h"
#include "Render/Farm/CostProfile.h"
#include "Render/Farm/PieceFileWriter.h"
#include "Render/Farm/PieceSet.h"
#include "Render/RangeRender.h"
#include "Render/TailSearch.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Engine/RenderContextScope.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <set>
#include <tuple>
#include <unordered_set>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

constexpr char const* kPlanAgain = "plan the render again, and render all pieces of the new plan";

// The media in the order of the clips, and what the render reads besides.
std::vector<FileFingerprint> ListMediaStates(TimelineRenderJob const& inJob, TimelineOptions const& inOptions)
{
	std::vector<FileFingerprint> prints;
	// Texts: paths take long to compare, and there may be very many clips.
	std::unordered_set<std::string> known{std::string()};
	for (ClipRow const& clip : inJob.GetSequence().mClips)
	{
		if (known.insert(clip.mMedia.native()).second)
		{
			prints.push_back(TakeFingerprint(std::filesystem::absolute(clip.mMedia)));
		}
	}
	if (inOptions.mListener && !inOptions.mListener->mFile.empty())
	{
		prints.push_back(TakeFingerprint(std::filesystem::absolute(inOptions.mListener->mFile)));
	}
	return prints;
}

// What is rendered, with a tail.
ProgrammeRange AddTail(
	TimelineRenderJob const& inJob, Programme const& inProgramme, OutputRequest const& inRequest)
{
	ProgrammeRange range = inJob.GetRange();
	if (inRequest.mTail)
	{
		CheckTail(inProgramme, range);
		range.mFrames += inRequest.mTail->mLength->ToSamples(inProgramme.mSampleRate);
	}
	return range;
}

// Whether nothing but clips, levels and pans make up the sound, so that any stretch of it can be rendered by itself.
bool IsPlain(Sequence::Description const& inDescription)
{
	auto const isPlainChain = [](Sequence::Chain const& inChain)
	{
		return std::ranges::all_of(inChain.mStages,
			[](Sequence::Stage const& inStage) { return std::holds_alternative<Sequence::Fader>(inStage); });
	};
	auto const isPlainItem = [&](Sequence::Item const& inItem)
	{
		return std::holds_alternative<Sequence::Clip>(inItem.mContent) && isPlainChain(inItem.mChain) &&
			   inItem.mResampling != Sequence::Resampling::kEngine;
	};
	auto const isPlainTrack = [&](Sequence::Track const& inTrack)
	{ return isPlainChain(inTrack.mChain) && std::ranges::all_of(inTrack.mItems, isPlainItem); };
	return inDescription.mSubmixes.empty() && !inDescription.mBinaural &&
		   isPlainChain(inDescription.mMaster) && std::ranges::all_of(inDescription.mTracks, isPlainTrack);
}

std::string FindWhyWhole(Programme const& inProgramme, unsigned inBlockFrames)
{
	// A graph of very many clips takes a while to make.
	if (IsPlain(*inProgramme.mDescription))
	{
		return {};
	}
	RenderContextScope const context(inBlockFrames, SN::kTimeMax, SN::ImmutableString("plan"));
	return MakeGraph(inProgramme, context.Get()).TakeReport().mWhyInOneRun;
}

// That the plan has the programme of the timeline, as pieces are written and cut by it.
void CheckProgramme(
	FarmPlan const& inPlan, TimelineRenderRequest const& inRender, TimelineRenderJob const& inJob)
{
	Programme const programme = inJob.OpenProgramme();
	ProgrammeRange const range = AddTail(inJob, programme, inRender);
	std::tuple<char const*, std::int64_t, std::int64_t> const numbers[] = {
		{"rate", inPlan.mSampleRate, programme.mSampleRate},
		{"channels", inPlan.mChannels, programme.GetLayout().size()},
		{"block", inPlan.mBlockFrames, ChooseBlock(programme, inRender.mBlockFrames)},
		{"firstSample", inPlan.mRange.mFirstFrame, range.mFirstFrame},
		{"samples", inPlan.mRange.mFrames, range.mFrames},
	};
	for (auto const& [name, planned, rendered] : numbers)
	{
		if (planned != rendered)
		{
			RefusePlan(inPlan, std::string("/programme/") + name,
				"is " + std::to_string(planned) + ", but that of the timeline is " +
					std::to_string(rendered));
		}
	}
}

// That clips are heard which were heard when the render was planned. Media that cannot be read, as of a disk that fails, may
// have the state that they had.
void CheckMissing(FarmPlan const& inPlan, TimelineRenderJob const& inJob)
{
	std::vector<MissingMedia> const& missing = inJob.GetSequence().mMissing;
	if (missing.size() > inPlan.mMissingClips)
	{
		RefuseFile(missing.front().mPath,
			"is missing or cannot be read, as media of " + std::to_string(missing.size()) +
				" clips; when the render was planned, it was " + std::to_string(inPlan.mMissingClips) + ": " +
				missing.front().mReason,
			kPlanAgain);
	}
}

[[noreturn]] void RefuseChange(FileFingerprint const& inBefore, FileFingerprint const& inNow)
{
	std::string const path = QuotePath(inBefore.mPath);
	throw HostError(HostError::Kind::kInput,
		{inNow.mPath, {},
			!inNow.IsThere()      ? "is not there, as it was when the render was planned as " + path
			: !inBefore.IsThere() ? "is there, which it was not when the render was planned"
								  : "is not what " + path + " was when the render was planned",
			inNow.IsThere() ? kPlanAgain : "make it reachable, with --media where it lies elsewhere"});
}

} // namespace

void CheckCanPlan(TimelineRenderRequest const& inRender)
{
	if (inRender.mStems != Stems::kNone)
	{
		Refuse("--stems cannot be planned, as a plan is that of one file; plan each marker's range by "
			   "itself, or "
			   "render stems without a plan");
	}
	if (inRender.mTail && !inRender.mTail->mLength)
	{
		Refuse("--tail auto cannot be planned, as its length shows when it is rendered; give a time");
	}
}

FileFingerprint TakeTimelineFingerprint(std::filesystem::path const& inPath)
{
	std::filesystem::path const path = std::filesystem::absolute(inPath);
	if (GetLowerEnding(path) == ".otioz")
	{
		return TakeFingerprint(path);
	}
	FileFingerprint print =
		TakeWholeFingerprint(GetLowerEnding(path) == ".otiod" ? path / "content.otio" : path);
	print.mPath = path;
	return print;
}

FarmPlan PlanFarm(
	TimelineRenderJob const& inJob, TimelineRenderRequest const& inRender, FarmRequest const& inRequest)
{
	CheckCanPlan(inRender);
	FarmPlan plan;
	plan.mProgram = inRequest.mProgram;
	plan.mOptions = inRequest.mOptions;
	plan.mHasTracks = inRequest.mHasTracks;
	plan.mInput = inRender.mInput.string();
	plan.mTimeline = TakeTimelineFingerprint(inRender.mInput);
	Programme const programme = inJob.OpenProgramme();
	plan.mMissingClips = inJob.GetSequence().mMissing.size();
	plan.mMissingEffects = ListMissingEffects(inJob.GetNotes()).size();
	plan.mMedia = ListMediaStates(inJob, inRender.mOptions);
	plan.mSampleRate = programme.mSampleRate;
	plan.mChannels = static_cast<unsigned>(programme.GetLayout().size());
	plan.mBlockFrames = ChooseBlock(programme, inRender.mBlockFrames);
	plan.mRange = AddTail(inJob, programme, inRender);
	plan.mWhyWhole = FindWhyWhole(programme, plan.mBlockFrames);
	plan.mPieces = Farm::CostProfile(programme).Cut(
		plan.mRange, plan.mBlockFrames, plan.mWhyWhole.empty() ? inRequest.mPieces : 1);
	return plan;
}

void CheckPlan(FarmPlan const& inPlan, TimelineRenderRequest const& inRender, TimelineRenderJob const& inJob,
	std::string const& inProgram)
{
	CheckCanPlan(inRender);
	if (inPlan.mProgram != inProgram)
	{
		throw HostError(HostError::Kind::kInput, {{}, {},
													 "the render was planned by another program: by " +
														 inPlan.mProgram + ", and this is " + inProgram,
													 kPlanAgain});
	}
	FileFingerprint const timeline = TakeTimelineFingerprint(inRender.mInput);
	if (!inPlan.mTimeline.IsSame(timeline))
	{
		RefuseChange(inPlan.mTimeline, timeline);
	}
	std::vector<FileFingerprint> const media = ListMediaStates(inJob, inRender.mOptions);
	for (std::size_t i = 0; i < std::min(media.size(), inPlan.mMedia.size()); ++i)
	{
		if (!inPlan.mMedia[i].IsSame(media[i]))
		{
			RefuseChange(inPlan.mMedia[i], media[i]);
		}
	}
	bool const hasEffects = ListMissingEffects(inJob.GetNotes()).size() == inPlan.mMissingEffects;
	if (!hasEffects || media.size() != inPlan.mMedia.size())
	{
		RefuseFile(inRender.mInput,
			std::string(hasEffects ? "has not the media" : "has not the effects") +
				" that it had when it was planned",
			hasEffects ? "give the same --media as the plan, or plan again"
					   : "install the plugins that the plan found, or plan again");
	}
	CheckMissing(inPlan, inJob);
	CheckProgramme(inPlan, inRender, inJob);
}

std::shared_ptr<Farm::PieceSet const> OpenPieces(
	FarmPlan const& inPlan, std::vector<std::filesystem::path> const& inPaths)
{
	return std::make_shared<Farm::PieceSet>(inPlan, inPaths);
}

std::vector<std::filesystem::path> const& ListPieceFiles(Farm::PieceSet const& inPieces)
{
	return inPieces.GetPaths();
}

TimelinePieceJob::TimelinePieceJob(
	TimelineRenderRequest inRender, FarmPlan inPlan, std::size_t inNumber, std::string const& inProgram)
	: mRender(std::move(inRender)),
	  mPlan(std::move(inPlan)),
	  mNumber(inNumber)
{
	if (mNumber < 1 || mNumber > mPlan.mPieces.size())
	{
		Refuse("there is no piece " + std::to_string(mNumber) + " in the plan; its pieces are 1 to " +
			   std::to_string(mPlan.mPieces.size()));
	}
	mJob = std::make_unique<TimelineRenderJob>(mRender);
	CheckPlan(mPlan, mRender, *mJob, inProgram);
}

std::vector<std::string> TimelinePieceJob::ListTaps() const
{
	std::set<std::string> taps;
	for (TrackRow const& row : mJob->GetSequence().mTracks)
	{
		if (mPlan.mHasTracks && row.mIsMeasured)
		{
			taps.insert(row.mPlace);
		}
	}
	return {taps.begin(), taps.end()};
}

std::optional<PieceSummary> TimelinePieceJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	auto const begin = std::chrono::steady_clock::now();
	Programme const programme = mJob->OpenProgramme();
	Farm::PieceFacts facts;
	facts.mPlan = GetIdentity(mPlan);
	facts.mNumber = mNumber;
	facts.mRange = GetPiece().mRange;
	facts.mSampleRate = mPlan.mSampleRate;
	facts.mChannels = mPlan.mChannels;
	facts.mBlockFrames = mPlan.mBlockFrames;
	facts.mTaps = ListTaps();
	RangeRender render;
	render.mRange = facts.mRange;
	render.mBlockFrames = mRender.mBlockFrames;
	render.mJobs = mRender.mJobs;
	render.mStop = inStop;
	for (std::string const& origin : facts.mTaps)
	{
		render.mView.mTaps.emplace(origin, nullptr);
	}
	Farm::PieceFileWriter writer(mRender.mOutput, facts);
	render.mTakePiece = [&](Piece& ioPiece)
	{
		writer.Take(ioPiece);
		if (inProgress)
		{
			inProgress({writer.GetFrames(), facts.mRange.mFrames});
		}
	};
	try
	{
		if (!RenderRange(programme, render))
		{
			return std::nullopt;
		}
	}
	catch (LatencyGrowth const&)
	{
		throw HostError(HostError::Kind::kInput,
			"the latency of an effect grows while it runs, which pieces cannot make up for; render without a "
			"plan");
	}
	writer.Commit(programme.mMedia->ListDamaged(), programme.mMedia->ListLearnedNoise(), mRender.mReplace);
	return PieceSummary{
		facts.mRange, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count()};
}

} // namespace SonaroHost::Otio
