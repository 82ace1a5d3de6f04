#include "SonaroHost/Render/TimelineRenderJob.h"

#include "Render/Encoder/AudioEncoder.h"
#include "Render/Farm/PieceSet.h"
#include "Render/RenderJob.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Files/OutputPlan.h"
#include "SonaroHost/Files/Temporary.h"
#include "SonaroHost/Render/JobChecks.h"
#include "SonaroHost/Render/TimelineProgramme.h"

#include <algorithm>
#include <list>
#include <string_view>
#include <system_error>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

constexpr std::size_t kMostBytes = 120;

[[noreturn]] void RefuseFolder(std::filesystem::path const& inPath, std::string const& inWhy)
{
	RefuseOutput("cannot create the folder " + QuotePath(inPath) + ": " + inWhy);
}

// Makes a folder for outputs with the folders above it where there is none. Those that it made and that are still empty
// are gone again with the list, the innermost first.
std::list<Temporary> MakeFolder(std::filesystem::path const& inPath)
{
	std::list<Temporary> made;
	std::error_code error;
	std::filesystem::path folder;
	for (std::filesystem::path const& name : inPath)
	{
		folder /= name;
		if (!name.empty() && !std::filesystem::exists(folder, error))
		{
			auto const make = [&]
			{
				std::filesystem::create_directory(folder, error);
				if (error)
				{
					RefuseFolder(inPath, error.message());
				}
				return folder;
			};
			made.emplace_front(make, Temporary::Removal::kWhileEmpty);
		}
	}
	std::error_code ignored;
	if (!std::filesystem::is_directory(inPath, ignored))
	{
		RefuseFolder(inPath, "a file has that name; choose another name");
	}
	return made;
}

// A file name for a stem: its number among inCount, from 1 on, and what of its name any file system can hold.
std::filesystem::path MakeStemName(
	std::size_t inIndex, std::size_t inCount, std::string const& inName, std::string const& inEnding)
{
	std::string number = std::to_string(inIndex + 1);
	number.insert(0, std::max<std::size_t>(2, std::to_string(inCount).size()) - number.size(), '0');
	std::string name(CutText(inName, kMostBytes));
	constexpr std::string_view kForbidden = "/\\:*?\"<>|";
	for (char& character : name)
	{
		bool const isControl = static_cast<unsigned char>(character) < 0x20 || character == 0x7f;
		character = isControl || kForbidden.find(character) != std::string_view::npos ? '_' : character;
	}
	// Some systems cut off blanks and dots at the end, and one before the ending looks odd anywhere.
	name.erase(name.find_last_not_of(" .") + 1);
	return number + (name.empty() ? "" : " " + name) + inEnding;
}

} // namespace

TimelineRenderJob::TimelineRenderJob(TimelineRenderRequest inRequest)
	: mRequest(std::move(inRequest)),
	  mInput(mRequest.mInput, mRequest.mMediaFolders, mRequest.mText)
{
	CheckNumbers(mRequest);
	constexpr int kFloats = 0;
	mFormat = ChooseFormat(mRequest, ChooseDither(ChooseSamples(mRequest), kFloats, false));
	mSequence = mInput.MakeSequence(mRequest.mOptions);
	mNotes = mInput.GetNotes();
	mNotes.insert(mNotes.end(), mSequence.mNotes.begin(), mSequence.mNotes.end());
	CheckHasSound(mSequence);
	ChooseRange();
	PlanStems();
	CheckFiles();
}

TimelineRenderJob::~TimelineRenderJob() = default;

void TimelineRenderJob::ChooseRange()
{
	mRange = {0, mSequence.mFrames};
	if (!mRequest.mRange.empty())
	{
		FoundRange found = FindRange(mRequest.mRange, mInput.GetTimeline(), mSequence);
		mRange = found.mRange;
		mRangeNotes = std::move(found.mNotes);
		mNotes.insert(mNotes.end(), mRangeNotes.begin(), mRangeNotes.end());
	}
}

void TimelineRenderJob::PlanStems()
{
	switch (mRequest.mStems)
	{
	case Stems::kNone:
		PlanFile({}, mRange, {});
		return;
	case Stems::kTracks:
		for (TrackRow const& row : mSequence.mTracks)
		{
			if (row.mDepth == 0 && row.mIsHeard)
			{
				PlanFile(row.mTrack, mRange, row.mPlace);
			}
		}
		break;
	case Stems::kMarkers:
		for (MarkerRow const& marker : mSequence.mMarkers)
		{
			ProgrammeRange const own = FindNamedRange(marker, mSequence);
			std::int64_t const first = std::max(own.mFirstFrame, mRange.mFirstFrame);
			std::int64_t const end =
				std::min(own.mFirstFrame + own.mFrames, mRange.mFirstFrame + mRange.mFrames);
			if (first < end)
			{
				PlanFile(marker.mName, {first, end - first}, {});
			}
		}
		break;
	}
	NameStems();
}

void TimelineRenderJob::PlanFile(
	std::string const& inName, ProgrammeRange const& inRange, std::string const& inOnlyTrack)
{
	PlannedFile& planned = mFiles.emplace_back();
	planned.mOnlyTrack = inOnlyTrack;
	RenderedFile& file = planned.mFile;
	file.mPath = mRequest.mOutput;
	file.mName = inName;
	file.mRange = inRange;
	file.mFades = ChooseFades(mRequest.mFadeIn, mRequest.mFadeOut, inRange.mFrames, GetSampleRate(),
		inName.empty() ? "the output" : "\"" + inName + "\"");
	std::int64_t const label =
		ToSamples(mSequence.mGlobalStart.value_or(Ratio()), GetSampleRate()) + inRange.mFirstFrame;
	if (mSequence.mGlobalStart && label >= 0)
	{
		file.mTimeReference = label;
	}
}

void TimelineRenderJob::NameStems()
{
	if (mFiles.empty())
	{
		Refuse(
			mRequest.mStems == Stems::kTracks
				? "no track of the timeline is heard, so there are no stems"
				: "there are no markers in the rendered range, so there are no stems; choose another range");
	}
	std::string const ending = std::string(".").append(ToLower(GetName(mFormat.mContainer)));
	for (std::size_t index = 0; index < mFiles.size(); ++index)
	{
		RenderedFile& file = mFiles[index].mFile;
		file.mPath /= MakeStemName(index, mFiles.size(), file.mName, ending);
	}
}

void TimelineRenderJob::CheckFiles() const
{
	OutputPlan plan;
	plan.mFiles = mRequest.mOtherOutputs;
	for (PlannedFile const& planned : mFiles)
	{
		if (!planned.mFile.mPath.empty())
		{
			plan.mFiles.push_back(planned.mFile.mPath);
			EncoderFormat encoded;
			encoded.mFormat = mFormat;
			encoded.mSampleRate = GetSampleRate();
			encoded.mLayout = mSequence.mLayout;
			encoded.mFrames = planned.mFile.mRange.mFrames;
			CheckFormat(planned.mFile.mPath, encoded);
		}
	}
	plan.mFolder = mRequest.mStems != Stems::kNone ? mRequest.mOutput : std::filesystem::path();
	plan.mInputs = mRequest.mOtherInputs;
	plan.mInputs.push_back(mRequest.mInput);
	if (auto const& listener = mRequest.mOptions.mListener; listener && !listener->mFile.empty())
	{
		plan.mInputs.push_back(listener->mFile);
	}
	plan.mMedia = mInput.ListMedia();
	plan.mReplaces = mRequest.mReplace;
	plan.Check();
}

std::optional<RenderSummary> TimelineRenderJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	auto const folders =
		mRequest.mStems != Stems::kNone ? MakeFolder(mRequest.mOutput) : std::list<Temporary>();
	RenderPlan plan = MakePlan();
	// Rows and timeline make room for the graph.
	if (!mRequest.mKeepsRows && mRequest.mMeasuring != Measuring::kTracks)
	{
		DropRows(mSequence);
	}
	mInput.DropTimeline();
	return RenderFiles(OpenProgramme(), plan, inProgress, inStop);
}

Programme TimelineRenderJob::OpenProgramme() const
{
	Programme programme = MakeProgramme(mSequence, mInput.GetMedia());
	programme.mRefusesDamage = mRequest.mRefusesDamage;
	if (mRequest.mPieces)
	{
		programme.mPieces = mRequest.mPieces;
		programme.mMedia = std::make_shared<Farm::StoredMedia>(mRequest.mPieces);
	}
	return programme;
}

RenderPlan TimelineRenderJob::MakePlan() const
{
	RenderPlan plan;
	plan.mRequest = mRequest;
	plan.mFormat = mFormat;
	plan.mDropsSignsOfZeros = mRequest.mOptions.mListener.has_value();
	plan.mMix.mRange = mRange;
	if (mRequest.mStems != Stems::kMarkers)
	{
		// All stems of tracks have those of the mix.
		plan.mMix.mFades = mFiles.front().mFile.mFades;
	}
	if (!mRequest.mOutput.empty())
	{
		plan.mFiles = mFiles;
	}
	plan.mWritesMix = mRequest.mStems == Stems::kNone;
	for (TrackRow const& row : mSequence.mTracks)
	{
		plan.mTracks.push_back({row.mIsMeasured ? row.mPlace : std::string(), row.mLayout});
		if (row.mDepth == 0 && mRequest.mStems == Stems::kTracks)
		{
			plan.mOutermostTracks.push_back(row.mPlace);
		}
	}
	return plan;
}

} // namespace SonaroHost::Otio
