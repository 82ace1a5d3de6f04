#include "TimelineRows.h"

#include "Levels.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/OtioSequence/TimelineRange.h"

namespace SonaroCommand
{

using namespace SonaroHost;
using namespace SonaroHost::Otio;

char const* GetName(ClipRow::Status inStatus)
{
	switch (inStatus)
	{
	case ClipRow::Status::kHeard:
		return "heard";
	case ClipRow::Status::kSilent:
		return "silent";
	case ClipRow::Status::kOutside:
		return "outside";
	case ClipRow::Status::kMissing:
		break;
	}
	return "missing";
}

Json ListClips(std::vector<ClipRow> const& inClips)
{
	Json list = Json::array();
	for (ClipRow const& clip : inClips)
	{
		Json json;
		json["name"] = clip.mName;
		json["track"] = clip.mTrack;
		json["place"] = clip.mPlace;
		json["status"] = GetName(clip.mStatus);
		if (!clip.mReason.empty())
		{
			json["reason"] = clip.mReason;
		}
		json["firstSample"] = clip.mFirstFrame;
		json["endSample"] = clip.mEndFrame;
		if (!clip.mMedia.empty())
		{
			json["media"] = clip.mMedia.string();
		}
		if (clip.mMediaRate > 0)
		{
			json["mediaRate"] = clip.mMediaRate;
			json["firstMediaSample"] = clip.mFirstMediaSample;
			json["endMediaSample"] = clip.mEndMediaSample;
		}
		json["speed"] = clip.mSpeed;
		list.push_back(std::move(json));
	}
	return list;
}

Json DescribeTrack(TrackRow const& inTrack)
{
	Json json;
	json["name"] = inTrack.mName;
	json["track"] = inTrack.mTrack;
	json["place"] = inTrack.mPlace;
	json["depth"] = inTrack.mDepth;
	json["isHeard"] = inTrack.mIsHeard;
	if (!inTrack.mReason.empty())
	{
		json["reason"] = inTrack.mReason;
	}
	json["layout"] = GetLayoutName(inTrack.mLayout);
	return json;
}

Json ListMarkers(TimelineSequence const& inSequence)
{
	Json list = Json::array();
	for (MarkerRow const& marker : inSequence.mMarkers)
	{
		ProgrammeRange const range = FindRange(marker, inSequence);
		Json json;
		json["name"] = marker.mName;
		json["comment"] = marker.mComment;
		json["track"] = marker.mTrack;
		json["place"] = marker.mPlace;
		json["firstSample"] = range.mFirstFrame;
		json["endSample"] = range.mFirstFrame + range.mFrames;
		list.push_back(std::move(json));
	}
	return list;
}

Json DescribeProgramme(TimelineSequence const& inSequence)
{
	Json json;
	json["rate"] = inSequence.mSampleRate;
	json["samples"] = inSequence.mFrames;
	json["seconds"] = static_cast<double>(inSequence.mFrames) / inSequence.mSampleRate;
	json["layout"] = GetLayoutName(inSequence.mLayout);
	if (inSequence.mGlobalStart)
	{
		json["globalStartSeconds"] = inSequence.mGlobalStart->ToDouble();
		json["globalStartRate"] = inSequence.mGlobalStartRate;
	}
	return json;
}

void AddLoudness(Json& ioJson, LoudnessReading const& inReading)
{
	ioJson["integratedLufs"] = GetNumberOrSilence(inReading.mIntegrated);
	ioJson["truePeakDbtp"] = GetNumberOrSilence(ToDecibels(inReading.mTruePeak));
	ioJson["peakDbfs"] = GetNumberOrSilence(ToDecibels(inReading.mPeak));
}

} // namespace SonaroCommand
