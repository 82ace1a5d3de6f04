#include "TimelineInfo.h"

#include "Command.h"
#include "Report/Json.h"
#include "Report/MediaRows.h"
#include "Report/TimelineNotes.h"
#include "Report/TimelineRows.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Media/AudioFileInfo.h"
#include "SonaroHost/Otio/Labels.h"
#include "SonaroHost/OtioSequence/ProgrammeTimecode.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Render/TimelineProgramme.h"
#include "Terminal/Console.h"
#include "Terminal/TextTable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <utility>

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
			CheckCanRender(mSequence, mInput.GetMedia());
		}
		catch (HostError const& error)
		{
			mRefusal = error;
		}
	}

	// How many clips are cut from each file.
	std::map<std::filesystem::path, std::size_t> CountMedia() const
	{
		std::map<std::filesystem::path, std::size_t> media;
		for (ClipRow const& clip : mSequence.mClips)
		{
			media[clip.mMedia] += clip.mMediaRate > 0 ? 1 : 0;
		}
		std::erase_if(media, [](auto const& inUse) { return inUse.second == 0; });
		return media;
	}

	TimelineInput mInput;
	TimelineSequence mSequence;
	std::vector<Note> mNotes;
	std::optional<ProgrammeTimecode> mTimecode = ProgrammeTimecode::Find(mInput.GetTimeline(), mSequence);
	// Why it cannot be rendered, if so.
	std::optional<HostError> mRefusal;
};

// Where each second of the media is heard, of the first ones.
std::string DescribeRamp(RampRow const& inRamp, int inSampleRate)
{
	constexpr std::size_t kMostMoments = 10;
	constexpr std::size_t kLongestFraction = 20;
	std::array<char, 128> text{};
	std::snprintf(text.data(), text.size(), "speed %.6g to %.6g, moves %.6g s", inRamp.mLowestSpeed,
		inRamp.mHighestSpeed, inRamp.mSeconds);
	// A long fraction stands in the report.
	bool const hasFraction = inRamp.mExactSeconds.find('/') != std::string::npos &&
							 inRamp.mExactSeconds.size() <= kLongestFraction;
	std::string const exact = hasFraction ? " (exactly " + inRamp.mExactSeconds + " s)" : "";
	std::string moments;
	for (std::size_t i = 0; i < std::min(inRamp.mMoments.size(), kMostMoments); ++i)
	{
		moments += (i == 0 ? "; second " : ", ") + std::to_string(inRamp.mMoments[i].mSecond) +
				   (i == 0 ? " of the file is heard at " : " at ") +
				   FormatTime(inRamp.mMoments[i].mFrame, inSampleRate);
	}
	return text.data() + exact + " through the media" + moments +
		   (inRamp.mMoments.size() > kMostMoments ? " ..." : "");
}

std::string DescribeClip(ClipRow const& inClip, int inSampleRate)
{
	std::string text = FormatTime(inClip.mFirstFrame, inSampleRate) + " - " +
					   FormatTime(inClip.mEndFrame, inSampleRate) + "  " + MakePrintable(inClip.mTrack) +
					   ": " + MakePrintable(MakeLabel(inClip.mName, "clip", inClip.mPlace));
	if (inClip.mMediaRate > 0)
	{
		text += ", " + MakePrintable(inClip.mMedia.filename().string()) + " from " +
				FormatTime(inClip.mFirstMediaSample, inClip.mMediaRate);
	}
	if (inClip.mRamp)
	{
		text += ", " + DescribeRamp(*inClip.mRamp, inSampleRate) +
				(inClip.mKeepsPitch ? " with its pitch kept" : "");
	}
	else if (inClip.mHasChangingSpeed)
	{
		text += ", at a changing speed";
	}
	else if (inClip.mSpeed != 1.0)
	{
		std::array<char, 32> speed{};
		std::snprintf(speed.data(), speed.size(), ", speed %.6g", inClip.mSpeed);
		text += std::string(speed.data()) + (inClip.mKeepsPitch ? " with its pitch kept" : "");
	}
	if (inClip.mDenoise)
	{
		text += ", noise reduced by " + FormatNumber(inClip.mDenoise->mReduction) + " dB";
	}
	return text + (inClip.mReason.empty() ? ""
										  : std::string(", ") + GetName(inClip.mStatus) + ": " +
												MakePrintable(inClip.mReason));
}

std::string FormatLength(std::int64_t inFrames, int inSampleRate)
{
	return FormatTime(inFrames, inSampleRate) + " (" + std::to_string(inFrames) + " samples)";
}

std::string FormatRate(double inRate)
{
	std::array<char, 32> text{};
	std::snprintf(text.data(), text.size(), "%.6g", inRate);
	return text.data();
}

std::string DescribeProgrammeForPeople(Described const& inDescribed)
{
	TimelineSequence const& sequence = inDescribed.mSequence;
	auto const& timecode = inDescribed.mTimecode;
	Ratio const length(sequence.mFrames, sequence.mSampleRate);
	std::string text = "Timeline  " + MakePrintable(inDescribed.mInput.GetTimeline().mName) + "\n";
	if (sequence.mGlobalStart)
	{
		text += "Start     " + timecode->GetLabel(Ratio()) + "\n";
	}
	text += "Length    " + (timecode ? timecode->GetLength(length) + ", " : "") +
			FormatLength(sequence.mFrames, sequence.mSampleRate) + "\n";
	text += "Rate      " + (timecode ? FormatRate(timecode->GetRate()) + " fps, " : "") +
			std::to_string(sequence.mSampleRate) + " Hz\n";
	return text + "Layout    " + GetLayoutName(sequence.mLayout) + "\n";
}

std::string ListMarkersForPeople(Described const& inDescribed)
{
	int const rate = inDescribed.mSequence.mSampleRate;
	std::vector<std::vector<std::string>> rows;
	for (MarkerRow const& marker : inDescribed.mSequence.mMarkers)
	{
		std::string const from = FormatTime(ToSamples(marker.mStart, rate), rate);
		std::string const to = FormatTime(ToSamples(marker.mEnd, rate), rate);
		auto const& timecode = inDescribed.mTimecode;
		std::string const labels =
			timecode ? timecode->GetLabel(marker.mStart) + " - " + timecode->GetLabel(marker.mEnd) : "";
		rows.push_back({from + " - " + to, labels, MakePrintable(marker.mName)});
	}
	return rows.empty() ? "" : "Markers\n" + FormatTable(rows);
}

std::string ListAnglesForPeople(TimelineSequence const& inSequence)
{
	int const rate = inSequence.mSampleRate;
	std::vector<std::vector<std::string>> rows;
	rows.reserve(inSequence.mAngles.size());
	for (AngleRow const& angle : inSequence.mAngles)
	{
		rows.push_back({FormatTime(angle.mFirstFrame, rate) + " - " + FormatTime(angle.mEndFrame, rate),
			std::to_string(angle.mAngle), MakePrintable(angle.mName), MakePrintable(angle.mTrack)});
	}
	return rows.empty() ? "" : "Angles\n" + FormatTable(rows);
}

// A column for what media state about their start is there where one of them does.
std::string ListMediaForPeople(Described const& inDescribed)
{
	std::vector<std::pair<AudioFileInfo const*, std::size_t>> media;
	for (auto const& [path, clips] : inDescribed.CountMedia())
	{
		if (AudioFileInfo const* const info = inDescribed.mInput.GetMedia().FindInfo(path))
		{
			media.emplace_back(info, clips);
		}
	}
	bool const hasStarts =
		std::ranges::any_of(media, [](auto const& inMedia) { return inMedia.first->mStart.has_value(); });
	std::vector<std::vector<std::string>> rows{{"clips", "format", "encoding", "channels", "Hz", "length"}};
	for (auto const& [info, clips] : media)
	{
		rows.push_back(
			{std::to_string(clips), info->mContainer, info->mEncoding, std::to_string(info->GetNumChannels()),
				std::to_string(info->mSampleRate), FormatTime(info->mFrames, info->mSampleRate)});
		if (hasStarts)
		{
			rows.back().push_back(info->mStart ? info->mStart->mText : "");
		}
		rows.back().push_back(MakePrintable(info->mPath.string()));
	}
	if (hasStarts)
	{
		rows.front().push_back("start");
	}
	rows.front().push_back("file");
	return media.empty() ? "" : "Media\n" + FormatTable(rows);
}

std::string ListMissingForPeople(Described const& inDescribed)
{
	std::string text;
	for (MissingFile const& file : GroupByFile(inDescribed.mSequence.mMissing))
	{
		MissingMedia const& first = *file.mFirst;
		text += "  " + DescribeReason(first) + ": " +
				(file.mClips == 1 ? "clip " : std::to_string(file.mClips) + " clips, the first one ") +
				QuoteName(GetClipLabel(first)) + " on " + QuoteName(first.mTrack) + " (" + first.mPlace +
				")\n";
	}
	return text.empty() ? "" : "Missing media\n" + text;
}

std::string DescribeForPeople(Described const& inDescribed)
{
	TimelineSequence const& sequence = inDescribed.mSequence;
	std::string text = DescribeProgrammeForPeople(inDescribed);
	text += "Tracks\n";
	for (TrackRow const& track : sequence.mTracks)
	{
		text += "  " + std::string(2 * track.mDepth, ' ') + MakePrintable(track.mTrack) +
				(track.mReason.empty() ? "" : " (silent: " + MakePrintable(track.mReason) + ")") + "\n";
	}
	text += "Clips\n";
	for (ClipRow const& clip : sequence.mClips)
	{
		text += "  " + DescribeClip(clip, sequence.mSampleRate) + "\n";
	}
	return text + ListAnglesForPeople(sequence) + ListMarkersForPeople(inDescribed) +
		   ListMediaForPeople(inDescribed) + ListMissingForPeople(inDescribed);
}

Json ListMediaForMachines(Described const& inDescribed)
{
	Json list = Json::array();
	for (auto const& [path, clips] : inDescribed.CountMedia())
	{
		if (AudioFileInfo const* const info = inDescribed.mInput.GetMedia().FindInfo(path))
		{
			list.push_back(
				{{"path", path.string()}, {"format", info->mContainer}, {"encoding", info->mEncoding},
					{"channels", info->GetNumChannels()}, {"layout", GetLayoutName(info->mLayout)},
					{"rate", info->mSampleRate}, {"samples", info->mFrames},
					{"seconds", static_cast<double>(info->mFrames) / info->mSampleRate}, {"clips", clips}});
			if (info->mStart)
			{
				list.back()["start"] = DescribeStart(*info->mStart);
			}
		}
	}
	return list;
}

std::string DescribeForMachines(std::string const& inInput, Described const& inDescribed)
{
	TimelineSequence const& sequence = inDescribed.mSequence;
	Json json;
	json["file"] = inInput;
	json["name"] = inDescribed.mInput.GetTimeline().mName;
	json["programme"] = DescribeProgramme(sequence);
	if (auto const& timecode = inDescribed.mTimecode)
	{
		json["programme"]["timecodeRate"] = timecode->GetRate();
		json["programme"]["startTimecode"] = timecode->GetLabel(Ratio());
		json["programme"]["lengthTimecode"] =
			timecode->GetLength(Ratio(sequence.mFrames, sequence.mSampleRate));
	}
	json["tracks"] = Json::array();
	for (TrackRow const& track : sequence.mTracks)
	{
		json["tracks"].push_back(DescribeTrack(track));
	}
	json["clips"] = ListClips(sequence.mClips);
	json["angles"] = ListAngles(sequence.mAngles);
	json["markers"] = ListMarkers(sequence);
	json["media"] = ListMediaForMachines(inDescribed);
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
