#include "PanStage.h"

#include "FrameGains.h"
#include "Level.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <numbers>

#include <cmath>

namespace SonaroHost::Sequence
{

namespace
{

// Places are worked out for so many frames at once.
constexpr std::int64_t kPanPiece = 256;

} // namespace

PanStage::Gains PanStage::GetGains(float inPan) const
{
	constexpr double kMiddle = 0.5;
	constexpr double kHalfTurn = std::numbers::pi;
	double const pan = std::clamp(static_cast<double>(inPan), 0.0, 1.0);
	if (IsMono())
	{
		double const angle = kHalfTurn / 2.0 * pan;
		return {pan == 1.0 ? 0.0f : static_cast<float>(zorvcore::math::Cos(angle)),
			static_cast<float>(zorvcore::math::Sin(angle))};
	}
	return {pan <= kMiddle ? 1.0f : static_cast<float>(zorvcore::math::Sin(kHalfTurn * (1.0 - pan))),
		pan >= kMiddle ? 1.0f : static_cast<float>(zorvcore::math::Sin(kHalfTurn * pan))};
}

PanStage::Gains const& PanStage::GetGainsAtRest(float inPan)
{
	// Also for what is not a number, which differs from itself.
	if (mRestingPan != inPan)
	{
		mRestingPan = inPan;
		mRestingGains = GetGains(inPan);
	}
	return mRestingGains;
}

// The channels that get a sound.
dsp::SilenceFlags PanStage::FindHeard(dsp::AudioBuffer const& inInput, dsp::AudioBuffer const& inOutput) const
{
	dsp::SilenceFlags const sounding = ~inInput.GetSilenceFlags();
	unsigned long long const inputs = mInput.size();
	dsp::SilenceFlags const panned =
		dsp::SilenceFlags::First(std::min(IsMono() ? 2 : inputs, inOutput.GetNumChannels()));
	if (IsMono())
	{
		return sounding.Test(0) ? panned : dsp::SilenceFlags();
	}
	return sounding & panned;
}

void PanStage::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, SN::TickTime const&)
{
	unsigned const frames = std::min(inInput.GetUseSize(), outOutput.GetUseSize());
	outOutput.Zero();
	dsp::SilenceFlags const heard = FindHeard(inInput, outOutput);
	outOutput.ClearSilenceFlags(heard);
	for (unsigned long long channel = 0;
		 frames < outOutput.GetUseSize() && channel < outOutput.GetNumChannels(); ++channel)
	{
		if (heard.Test(channel))
		{
			std::fill_n(outOutput.GetChannel(channel) + frames, outOutput.GetUseSize() - frames, 0.0f);
		}
	}
	mClock.Take(frames,
		[&](FrameRun const& inRun, unsigned inOffset)
		{
			if (auto const pan = mPan.FollowAtRest(inRun, mClock))
			{
				PlaceAtRest({inInput, outOutput, heard}, *pan, inOffset, static_cast<unsigned>(inRun.mCount));
				return;
			}
			FrameRun piece = inRun;
			for (std::int64_t done = 0; done < inRun.mCount; done += piece.mCount)
			{
				piece.mFirst = inRun.GetFrame(done);
				piece.mCount = std::min(kPanPiece, inRun.mCount - done);
				Place({inInput, outOutput, heard}, piece, inOffset + static_cast<unsigned>(done));
			}
		});
}

void PanStage::PlaceAtRest(Passage const& inPassage, float inPan, unsigned inOffset, unsigned inCount)
{
	Gains const& gains = GetGainsAtRest(inPan);
	for (unsigned long long channel = 0; channel < inPassage.mOutput.GetNumChannels(); ++channel)
	{
		if (inPassage.mHeard.Test(channel))
		{
			ScaleByBoth(inCount, inPassage.mInput.GetChannel(IsMono() ? 0 : channel) + inOffset,
				mLeftGain->mGain, channel % 2 == 0 ? gains.mLeft : gains.mRight,
				inPassage.mOutput.GetChannel(channel) + inOffset);
		}
	}
}

void PanStage::Place(Passage const& inPassage, FrameRun const& inRun, unsigned inOffset)
{
	float pans[kPanPiece];
	auto const count = static_cast<unsigned>(inRun.mCount);
	if (auto const pan = mPan.Follow(inRun, mClock, pans))
	{
		PlaceAtRest(inPassage, *pan, inOffset, count);
		return;
	}
	// The gains of the left and of the right.
	float gains[2][kPanPiece];
	for (unsigned i = 0; i < count; ++i)
	{
		Gains const moving = GetGains(pans[i]);
		gains[0][i] = moving.mLeft;
		gains[1][i] = moving.mRight;
	}
	for (unsigned long long channel = 0; channel < inPassage.mOutput.GetNumChannels(); ++channel)
	{
		if (!inPassage.mHeard.Test(channel))
		{
			continue;
		}
		float const* const side = gains[channel % 2];
		float const left = mLeftGain->mGain;
		float const* const input = inPassage.mInput.GetChannel(IsMono() ? 0 : channel) + inOffset;
		float* const output = inPassage.mOutput.GetChannel(channel) + inOffset;
		for (unsigned i = 0; i < count; ++i)
		{
			float const scaled = (input[i] * left) * side[i];
			output[i] = side[i] == 0.0f ? 0.0f : scaled;
		}
	}
}

void PanStage::CollectLiveParameters(SN::LiveAudioParameterMap& outParameters)
{
	CollectLiveParameter(mPan.GetParameter(), outParameters);
}

} // namespace SonaroHost::Sequence
