#include "PanStage.h"

#include "FrameGains.h"
#include "Level.h"
#include "zorvaudiodsp/AudioBuffer.h"

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
		return {pan == 1.0 ? 0.0f : static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))};
	}
	return {pan <= kMiddle ? 1.0f : static_cast<float>(std::sin(kHalfTurn * (1.0 - pan))),
		pan >= kMiddle ? 1.0f : static_cast<float>(std::sin(kHalfTurn * pan))};
}

void PanStage::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, SN::TickTime const&)
{
	unsigned const frames = std::min(inInput.GetUseSize(), outOutput.GetUseSize());
	outOutput.Zero();
	if (!inInput.IsSilent())
	{
		unsigned long long const inputs = mInput.size();
		unsigned long long const panned = IsMono() ? 2 : inputs;
		for (unsigned long long channel = 0; channel < std::min(panned, outOutput.GetNumChannels());
			 ++channel)
		{
			if (!inInput.IsChannelSilent(IsMono() ? 0 : channel))
			{
				outOutput.NoteChannelWrite(channel, outOutput.GetUseSize());
				std::fill_n(outOutput.GetChannel(channel) + frames, outOutput.GetUseSize() - frames, 0.0f);
			}
		}
	}
	mClock.Take(frames,
		[&](FrameRun const& inRun, unsigned inOffset)
		{
			if (auto const pan = mPan.FollowAtRest(inRun, mClock))
			{
				PlaceAtRest(inInput, outOutput, *pan, inOffset, static_cast<unsigned>(inRun.mCount));
				return;
			}
			FrameRun piece = inRun;
			for (std::int64_t done = 0; done < inRun.mCount; done += piece.mCount)
			{
				piece.mFirst = inRun.GetFrame(done);
				piece.mCount = std::min(kPanPiece, inRun.mCount - done);
				Place(inInput, outOutput, piece, inOffset + static_cast<unsigned>(done));
			}
		});
}

void PanStage::PlaceAtRest(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, float inPan,
	unsigned inOffset, unsigned inCount) const
{
	Gains const gains = GetGains(inPan);
	for (unsigned long long channel = 0; channel < outOutput.GetNumChannels(); ++channel)
	{
		if (!outOutput.IsChannelSilent(channel))
		{
			ScaleBy(inCount, inInput.GetChannel(IsMono() ? 0 : channel) + inOffset,
				channel % 2 == 0 ? gains.mLeft : gains.mRight, outOutput.GetChannel(channel) + inOffset);
		}
	}
}

void PanStage::Place(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, FrameRun const& inRun, unsigned inOffset)
{
	float pans[kPanPiece];
	auto const count = static_cast<unsigned>(inRun.mCount);
	if (auto const pan = mPan.Follow(inRun, mClock, pans))
	{
		PlaceAtRest(inInput, outOutput, *pan, inOffset, count);
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
	for (unsigned long long channel = 0; channel < outOutput.GetNumChannels(); ++channel)
	{
		if (outOutput.IsChannelSilent(channel))
		{
			continue;
		}
		float const* const side = gains[channel % 2];
		float const* const input = inInput.GetChannel(IsMono() ? 0 : channel) + inOffset;
		float* const output = outOutput.GetChannel(channel) + inOffset;
		for (unsigned i = 0; i < count; ++i)
		{
			float const scaled = input[i] * side[i];
			output[i] = side[i] == 0.0f ? 0.0f : scaled;
		}
	}
}

void PanStage::CollectLiveParameters(SN::LiveAudioParameterMap& outParameters)
{
	CollectLiveParameter(mPan.GetParameter(), outParameters);
}

} // namespace SonaroHost::Sequence
