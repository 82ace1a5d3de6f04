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

void ApplyAtRest(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount, float inGain)
{
	if (inGain != 1.0f)
	{
		ApplyGain(ioBuffer, inFirst, inCount, inGain);
	}
}

} // namespace

void Level::Apply(dsp::AudioBuffer& ioBuffer, StageClock& ioClock)
{
	ioClock.Take(ioBuffer.GetUseSize(),
		[&](FrameRun const& inRun, unsigned inOffset)
		{
			if (auto const gain = FollowAtRest(inRun, ioClock))
			{
				ApplyAtRest(ioBuffer, inOffset, static_cast<unsigned>(inRun.mCount), *gain);
				return;
			}
			ApplyMoving(ioBuffer, inRun, inOffset, ioClock);
		});
}

float Level::ApplyUnlessAtRest(dsp::AudioBuffer& ioBuffer, StageClock& ioClock)
{
	float left = 1.0f;
	ioClock.Take(ioBuffer.GetUseSize(),
		[&](FrameRun const& inRun, unsigned inOffset)
		{
			auto const gain = FollowAtRest(inRun, ioClock);
			if (!gain)
			{
				ApplyMoving(ioBuffer, inRun, inOffset, ioClock);
			}
			else if (*gain != 0.0f && inRun.mCount == ioBuffer.GetUseSize())
			{
				left = *gain;
			}
			else
			{
				ApplyAtRest(ioBuffer, inOffset, static_cast<unsigned>(inRun.mCount), *gain);
			}
		});
	return left;
}

std::optional<float> Level::FollowAtRest(FrameRun const& inRun, StageClock const& inClock)
{
	auto const gain = mGain.FollowAtRest(inRun, inClock);
	auto const mute = gain ? mMute.FollowAtRest(inRun, inClock) : std::nullopt;
	return mute ? std::optional(*gain * (1.0f - *mute)) : std::nullopt;
}

void Level::ApplyMoving(
	dsp::AudioBuffer& ioBuffer, FrameRun const& inRun, unsigned inOffset, StageClock const& inClock)
{
	FrameRun piece = inRun;
	for (std::int64_t done = 0; done < inRun.mCount; done += piece.mCount)
	{
		piece.mFirst = inRun.GetFrame(done);
		piece.mCount = std::min(kLevelPiece, inRun.mCount - done);
		ApplyTo(ioBuffer, piece, inOffset + static_cast<unsigned>(done), inClock);
	}
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
		ApplyAtRest(ioBuffer, inOffset, count, *gain * (1.0f - *mute));
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
