#include "TimelineInfo.h"

#include "Command.h"
#include "Console.h"
#include "Json.h"
#include "SonaroHost/ChannelLayouts.h"
#include "SonaroHost/HostError.h"
#include "SonaroHost/Otio/TimelineGraph.h"
#include "SonaroHost/Otio/TimelineInput.h"
#include "SonaroHost/TimePosition.h"
#include "TimelineNotes.h"
#include "TimelineRows.h"

#include <array>
#include <cstdio>
#include <map>
#include <optional>

namespace SonaroCommand
{

using namespace SonaroHost;
using namespace SonaroHost::Otio;

namespace
{

struct Described
{
	Described(std::string const& inPath, std::vector<std::filesystem::path> const& inMediaFolders)
		: mInput(inPath, inMediaFolders),
		  mSequence(mInput.MakeSequence()),
		  mNotes(mInput.GetNotes())
	{
		mNotes.insert(mNotes.end(), mSequence.mNotes.begin(), mSequence.mNotes.end());
		try
		{
			CheckCanRender(mSequence);
		}
		catch (HostError const& error)
		{
			mRefusal = error;
		}
	}

	// Of each file its rate and how many clips are cut from it.
	std::map<std::filesystem::path, std::pair<int, std::size_t>> CountMedia() const
	{
		std::map<std::filesystem::path, std::pair<int, std::size_t>> media;
		for (ClipRow const& clip : mSequence.mClips)
		{
			if (clip.mMediaRate > 0)
			{
				auto& [rate, count] = media[clip.mMedia];
				rate = clip.mMediaRate;
				++count;
			}
		}
		return media;
	}

	TimelineInput mInput;
	TimelineSequence mSequence;
	std::vector<Note> mNotes;
	// Why it cannot be rendered, if so.
	std::optional<HostError> mRefusal;
};

std::string DescribeClip(ClipRow const& inClip, int inSampleRate)
{
	std::string text = FormatTime(inClip.mFirstFrame, inSampleRate) + " - " +
					   FormatTime(inClip.mEndFrame, inSampleRate) + "  " + inClip.mTrack + ": " +
					   (inClip.mName.empty() ? "(no name)" : inClip.mName);
	if (inClip.mMediaRate > 0)
	{
		text += ", " + inClip.mMedia.filename().string() + " from " +
				FormatTime(inClip.mFirstMediaSample, inClip.mMediaRate);
	}
	if (inClip.mSpeed != 1.0)
	{
		std::array<char, 32> speed{};
		std::snprintf(speed.data(), speed.size(), ", speed %.6g", inClip.mSpeed);
		text += speed.data();
	}
	return text + (inClip.mReason.empty()
						  ? ""
						  : std::string(", ") + GetName(inClip.mStatus) + ": " + inClip.mReason);
}

std::string DescribeForPeople(Described const& inDescribed)
{
	TimelineSequence const& sequence = inDescribed.mSequence;
	std::string text = "Timeline  " + inDescribed.mInput.GetTimeline().mName + "\n" + "Length    " +
					   FormatTime(sequence.mFrames, sequence.mSampleRate) + " (" +
					   std::to_string(sequence.mFrames) + " samples)\n" + "Rate      " +
					   std::to_string(sequence.mSampleRate) + " Hz\n" + "Layout    " +
					   GetLayoutName(sequence.mDescription->mLayout) + "\n";
	text += "Tracks\n";
	for (TrackRow const& track : sequence.mTracks)
	{
		text += "  " + std::string(2 * track.mDepth, ' ') + track.mTrack +
				(track.mReason.empty() ? "" : " (silent: " + track.mReason + ")") + "\n";
	}
	text += "Clips\n";
	for (ClipRow const& clip : sequence.mClips)
	{
		text += "  " + DescribeClip(clip, sequence.mSampleRate) + "\n";
	}
	text += sequence.mMarkers.empty() ? "" : "Markers\n";
	for (MarkerRow const& marker : sequence.mMarkers)
	{
		text += "  " + FormatTime(ToSamples(marker.mStart, sequence.mSampleRate), sequence.mSampleRate) +
				" - " + FormatTime(ToSamples(marker.mEnd, sequence.mSampleRate), sequence.mSampleRate) +
				"  " + marker.mName + "\n";
	}
	text += "Media\n";
	for (auto const& [path, use] : inDescribed.CountMedia())
	{
		text += "  " + path.string() + ", " + std::to_string(use.first) + " Hz, " +
				std::to_string(use.second) + (use.second == 1 ? " clip\n" : " clips\n");
	}
	for (MissingMedia const& missing : sequence.mMissing)
	{
		text += "  missing: " + (missing.mPath.empty() ? "" : QuotePath(missing.mPath) + " ") +
				missing.mReason + " (\"" + missing.mClip + "\" on " + missing.mTrack + ")\n";
	}
	return text;
}

std::string DescribeForMachines(std::string const& inInput, Described const& inDescribed)
{
	TimelineSequence const& sequence = inDescribed.mSequence;
	Json json;
	json["file"] = inInput;
	json["name"] = inDescribed.mInput.GetTimeline().mName;
	json["programme"] = DescribeProgramme(sequence);
	json["tracks"] = Json::array();
	for (TrackRow const& track : sequence.mTracks)
	{
		json["tracks"].push_back(DescribeTrack(track));
	}
	json["clips"] = ListClips(sequence.mClips);
	json["markers"] = ListMarkers(sequence);
	json["media"] = Json::array();
	for (auto const& [path, use] : inDescribed.CountMedia())
	{
		json["media"].push_back({{"path", path.string()}, {"rate", use.first}, {"clips", use.second}});
	}
	json["missing"] = ListMissing(sequence.mMissing);
	json["levelsNotRead"] = CountUnreadLevels(inDescribed.mNotes);
	json["notes"] = ListNotes(inDescribed.mNotes);
	if (inDescribed.mRefusal)
	{
		HostError::Parts const& parts = inDescribed.mRefusal->GetParts();
		json["refusal"] = {{"file", parts.mFile.string()}, {"place", parts.mPlace}, {"reason", parts.mReason},
			{"remedy", parts.mRemedy}};
	}
	return ToText(json);
}

} // namespace

int TellOfTimeline(
	std::string const& inInput, std::vector<std::filesystem::path> const& inMediaFolders, bool inAsJson)
{
	Described const described(inInput, inMediaFolders);
	PrintResult(inAsJson ? DescribeForMachines(inInput, described) : DescribeForPeople(described));
	if (!described.mRefusal)
	{
		return kExitSuccess;
	}
	PrintError(described.mRefusal->what());
	return GetExitCode(described.mRefusal->GetKind());
}

} // namespace SonaroCommand
