#include "TimelineRows.h"

#include "Levels.h"
#include "MediaRows.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/OtioSequence/TimelineRange.h"

namespace SonaroCommand
{

using namespace SonaroHost;
using namespace SonaroHost::Otio;

namespace
{

Json DescribeRamp(RampRow const& inRamp)
{
	Json json{{"exactMediaSeconds", inRamp.mExactSeconds}, {"mediaSeconds", inRamp.mSeconds},
		{"lowestSpeed", inRamp.mLowestSpeed}, {"highestSpeed", inRamp.mHighestSpeed},
		{"stepSeconds", inRamp.mStepSeconds}, {"heard", Json::array()}};
	for (RampRow::Moment const& moment : inRamp.mMoments)
	{
		json["heard"].push_back({{"mediaSecond", moment.mSecond}, {"sample", moment.mFrame}});
	}
	return json;
}

} // namespace

char const* GetName(ClipRow::Status inStatus)
{
	// In the order of ClipRow::Status.
	constexpr char const* kStatusNames[] = {"heard", "silent", "missing", "outside"};
	return kStatusNames[static_cast<std::size_t>(inStatus)];
}

Json ListClips(std::vector<ClipRow> const& inClips)
{
	Json list = Json::array();
	for (ClipRow const& clip : inClips)
	{
		Json json{{"name", clip.mName}, {"track", clip.mTrack}, {"place", clip.mPlace},
			{"status", GetName(clip.mStatus)}};
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
		if (clip.mRamp)
		{
			json["ramp"] = DescribeRamp(*clip.mRamp);
		}
		json["keepPitch"] = clip.mKeepsPitch;
		json["pitch"] = clip.mSemitones;
		if (clip.mDenoise)
		{
			json["denoise"] = DescribeDenoise(*clip.mDenoise);
		}
		list.push_back(std::move(json));
	}
	return list;
}

Json DescribeTrack(TrackRow const& inTrack)
{
	Json json{{"name", inTrack.mName}, {"track", inTrack.mTrack}, {"place", inTrack.mPlace},
		{"depth", inTrack.mDepth}, {"isHeard", inTrack.mIsHeard}};
	if (!inTrack.mReason.empty())
	{
		json["reason"] = inTrack.mReason;
	}
	json["layout"] = GetLayoutName(inTrack.mLayout);
	return json;
}

Json ListAngles(std::vector<AngleRow> const& inAngles)
{
	Json list = Json::array();
	for (AngleRow const& angle : inAngles)
	{
		list.push_back({{"angle", angle.mAngle}, {"name", angle.mName}, {"track", angle.mTrack},
			{"place", angle.mPlace}, {"firstSample", angle.mFirstFrame}, {"endSample", angle.mEndFrame}});
	}
	return list;
}

Json ListMarkers(TimelineSequence const& inSequence)
{
	Json list = Json::array();
	for (MarkerRow const& marker : inSequence.mMarkers)
	{
		ProgrammeRange const range = FindRange(marker, inSequence);
		list.push_back({{"name", marker.mName}, {"comment", marker.mComment}, {"track", marker.mTrack},
			{"place", marker.mPlace}, {"firstSample", range.mFirstFrame},
			{"endSample", range.mFirstFrame + range.mFrames}});
	}
	return list;
}

Json DescribeProgramme(TimelineSequence const& inSequence)
{
	Json json{{"rate", inSequence.mSampleRate}, {"samples", inSequence.mFrames},
		{"seconds", static_cast<double>(inSequence.mFrames) / inSequence.mSampleRate},
		{"layout", GetLayoutName(inSequence.mLayout)}};
	if (inSequence.mGlobalStart)
	{
		json["globalStartSeconds"] = inSequence.mGlobalStart->ToDouble();
		json["globalStartRate"] = inSequence.mGlobalStartRate;
	}
	return json;
}

void AddLoudness(Json& ioJson, LoudnessReading const& inReading)
{
	ioJson.update(Json{{"integratedLufs", GetNumberOrSilence(inReading.mIntegrated)},
		{"truePeakDbtp", GetNumberOrSilence(ToDecibels(inReading.mTruePeak))},
		{"peakDbfs", GetNumberOrSilence(ToDecibels(inReading.mPeak))}});
	if (inReading.mLeftOutSamples > 0)
	{
		ioJson["leftOutSamples"] = inReading.mLeftOutSamples;
	}
}

} // namespace SonaroCommand
