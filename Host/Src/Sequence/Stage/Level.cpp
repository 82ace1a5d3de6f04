#include "Level.h"

#include "FrameGains.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

namespace
{

// Values that move are worked out for so many frames at once.
constexpr std::int64_t kLevelPiece = 256;

void ApplyAtRest(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount, float inGain, float inMute)
{
	if (inGain != 1.0f || inMute != 0.0f)
	{
		ApplyGain(ioBuffer, inFirst, inCount, inGain * (1.0f - inMute));
	}
}

} // namespace

Level::Level(Fader const& inFader)
	: mGain(inFader.mGain, 1.0f),
	  mMute(inFader.mMute, 0.0f)
{
}

void Level::Apply(dsp::AudioBuffer& ioBuffer, StageClock& ioClock)
{
	ioClock.Take(ioBuffer.GetUseSize(),
		[&](FrameRun const& inRun, unsigned inOffset)
		{
			auto const gain = mGain.FollowAtRest(inRun, ioClock);
			auto const mute = gain ? mMute.FollowAtRest(inRun, ioClock) : std::nullopt;
			if (gain && mute)
			{
				ApplyAtRest(ioBuffer, inOffset, static_cast<unsigned>(inRun.mCount), *gain, *mute);
				return;
			}
			FrameRun piece = inRun;
			for (std::int64_t done = 0; done < inRun.mCount; done += piece.mCount)
			{
				piece.mFirst = inRun.GetFrame(done);
				piece.mCount = std::min(kLevelPiece, inRun.mCount - done);
				ApplyTo(ioBuffer, piece, inOffset + static_cast<unsigned>(done), ioClock);
			}
		});
}

void Level::ApplyTo(
	dsp::AudioBuffer& ioBuffer, FrameRun const& inRun, unsigned inOffset, StageClock const& inClock)
{
	float gains[kLevelPiece];
	float mutes[kLevelPiece];
	auto const gain = mGain.Follow(inRun, inClock, gains);
	auto const mute = mMute.Follow(inRun, inClock, mutes);
	auto const count = static_cast<unsigned>(inRun.mCount);
	if (gain && mute)
	{
		ApplyAtRest(ioBuffer, inOffset, count, *gain, *mute);
		return;
	}
	for (std::int64_t i = 0; i < inRun.mCount; ++i)
	{
		gains[i] = gain.value_or(gains[i]) * (1.0f - mute.value_or(mutes[i]));
	}
	ApplyGains(ioBuffer, inOffset, count, gains);
}

void Level::CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) const
{
	CollectLiveParameter(mGain.GetParameter(), outParameters);
	CollectLiveParameter(mMute.GetParameter(), outParameters);
}

} // namespace SonaroHost::Sequence
