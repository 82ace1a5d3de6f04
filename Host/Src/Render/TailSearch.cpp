#include "TailSearch.h"

#include "RangeRender.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/TimePosition.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kMostSeconds = 30;
constexpr std::int64_t kSilentSeconds = 2;
// -90 dBFS.
constexpr float kThreshold = 3.1622776e-5f;

// How many frames of a block there are up to the last one that is heard.
std::int64_t CountHeard(dsp::AudioBuffer const& inBlock)
{
	std::int64_t heard = 0;
	for (unsigned channel = 0; channel < inBlock.GetNumChannels(); ++channel)
	{
		std::int64_t count = inBlock.IsChannelSilent(channel) ? 0 : inBlock.GetUseSize();
		float const* const samples = inBlock.GetChannel(channel);
		while (count > heard && !(std::fabs(samples[count - 1]) >= kThreshold))
		{
			--count;
		}
		heard = std::max(heard, count);
	}
	return heard;
}

} // namespace

void CheckTail(Programme const& inProgramme, ProgrammeRange const& inRange)
{
	std::int64_t const end = inRange.mFirstFrame + inRange.mFrames;
	if (end < inProgramme.mFrames)
	{
		int const rate = inProgramme.mSampleRate;
		Refuse("a tail follows the end of the programme at " + FormatTime(inProgramme.mFrames, rate) +
			   ", but the range ends before it at " + FormatTime(end, rate) +
			   "; let the range reach the end, or leave the tail out");
	}
}

std::optional<std::int64_t> FindTail(Programme const& inProgramme, RangeRender const& inRender)
{
	std::int64_t const end = inRender.mRange.mFrames;
	std::int64_t done = 0;
	std::int64_t heard = end;
	std::stop_source enough;
	std::stop_callback const stop(inRender.mStop, [&enough] { enough.request_stop(); });
	RangeRender render = inRender;
	render.mRange.mFrames += kMostSeconds * inProgramme.mSampleRate;
	render.mView = {};
	render.mTapGroups = {};
	render.mStop = enough.get_token();
	render.mSink = [&](dsp::AudioBuffer& ioBlock)
	{
		std::int64_t const count = CountHeard(ioBlock);
		heard = count > 0 ? std::max(heard, done + count) : heard;
		done += ioBlock.GetUseSize();
		if (done - heard >= kSilentSeconds * inProgramme.mSampleRate)
		{
			enough.request_stop();
		}
	};
	RenderRange(inProgramme, render);
	return inRender.mStop.stop_requested() ? std::nullopt : std::optional(heard - end);
}

} // namespace SonaroHost
