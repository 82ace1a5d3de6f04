#include "PanStage.h"

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
constexpr std::int64_t kPiece = 256;

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
		unsigned long long const inputs = mLayouts.mInput.size();
		unsigned long long const panned = IsMono() ? 2 : inputs;
		for (unsigned long long channel = 0; channel < std::min(panned, outOutput.GetNumChannels());
			 ++channel)
		{
			if (!inInput.IsChannelSilent(IsMono() ? 0 : channel))
			{
				outOutput.NoteChannelWrite(channel, outOutput.GetUseSize());
				std::fill_n(outOutput.GetChannel(channel), outOutput.GetUseSize(), 0.0f);
			}
		}
	}
	mClock.Take(frames,
		[&](FrameRun const& inRun, unsigned inOffset)
		{
			FrameRun piece = inRun;
			for (std::int64_t done = 0; done < inRun.mCount; done += piece.mCount)
			{
				piece.mFirst = inRun.GetFrame(done);
				piece.mCount = std::min(kPiece, inRun.mCount - done);
				Place(inInput, outOutput, piece, inOffset + static_cast<unsigned>(done));
			}
		});
}

void PanStage::Place(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, FrameRun const& inRun, unsigned inOffset)
{
	float pans[kPiece];
	Gains gains[kPiece];
	auto const pan = mPan.Follow(inRun, mClock, pans);
	Gains const fixed = GetGains(pan.value_or(0.0f));
	for (std::int64_t i = 0; i < inRun.mCount; ++i)
	{
		gains[i] = pan ? fixed : GetGains(pans[i]);
	}
	for (unsigned long long channel = 0; channel < outOutput.GetNumChannels(); ++channel)
	{
		if (outOutput.IsChannelSilent(channel))
		{
			continue;
		}
		float const* const input = inInput.GetChannel(IsMono() ? 0 : channel) + inOffset;
		float* const output = outOutput.GetChannel(channel) + inOffset;
		for (std::int64_t i = 0; i < inRun.mCount; ++i)
		{
			float const gain = channel % 2 == 0 ? gains[i].mLeft : gains[i].mRight;
			output[i] = gain == 0.0f ? 0.0f : input[i] * gain;
		}
	}
}

void PanStage::CollectLiveParameters(SN::LiveAudioParameterMap& outParameters)
{
	CollectLiveParameter(mPan.GetParameter(), outParameters);
}

void* PanStage::QueryMap(SN::Guid const& inIdentifier)
{
	void* const found =
		zorvcore::classref::QueryInterfaces<SN::IAudioPanProcessor, SN::ILiveAudioParameterOwner>(
			this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

} // namespace SonaroHost::Sequence
