#include "Panner/Algorithm/BalanceProcessor.h"

#include "Vexilon/Constants.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>

namespace SN
{

namespace
{

// The angle is formed in double precision and rounded before the sine.
float GetScale(double inShare)
{
	constexpr auto kPi = static_cast<double>(VX::kPi);
	return zorvcore::math::Sin(static_cast<float>((kPi + kPi) * 0.5 * inShare));
}

} // namespace

void BalanceProcessor::Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, float inPan)
{
	if (inInput.IsSilent())
	{
		outOutput.SetSilenceFlags(dsp::SilenceFlags::All());
		return;
	}
	if (inInput.GetNumChannels() == 0 || outOutput.GetNumChannels() == 0)
	{
		return;
	}
	SetPan(inPan);
	unsigned const frames = inInput.GetUseSize();
	if (mCentred)
	{
		outOutput.CopyCertainChannelsFrom(inInput, frames, mActiveChannels);
	}
	else if (inInput.GetNumChannels() > 1)
	{
		ProcessPairs(inInput, outOutput);
	}
	else if (mPanLeft)
	{
		outOutput.CopyCertainChannelsFrom(inInput, frames, mActiveChannels);
	}
	else
	{
		outOutput.CopyFromScale(inInput, mLeftScale);
	}
}

void BalanceProcessor::SetPan(float inPan)
{
	// Also for what is not a number, which differs from itself.
	if (inPan == mLastPan)
	{
		return;
	}
	mLastPan = inPan;
	mCentred = inPan == 0.5f;
	if (mCentred)
	{
		return;
	}
	mPanLeft = inPan < 0.5f;
	if (mPanLeft)
	{
		mRightScale = GetScale(static_cast<double>(inPan));
	}
	else
	{
		mLeftScale = GetScale(1.0 - static_cast<double>(inPan));
	}
}

void BalanceProcessor::ProcessPairs(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	unsigned long long const channels = std::min(inInput.GetNumChannels(), outOutput.GetNumChannels());
	bool const hasLoneLeft = inInput.GetNumChannels() == outOutput.GetNumChannels() && channels % 2 == 1;
	auto const pairs = static_cast<unsigned>(std::min<unsigned long long>(channels / 2, kMaxPairs));
	for (unsigned pair = 0; pair < pairs + (hasLoneLeft ? 1 : 0) && pair < kMaxPairs; ++pair)
	{
		unsigned long long const left = 2ull * pair;
		if (mActiveChannels.Test(left))
		{
			mLeftInputs[pair].AssignForReading(inInput, left);
			mLeftOutputs[pair].Assign(outOutput, left);
			ProcessSide(mLeftInputs[pair], mLeftOutputs[pair], mPanLeft, mLeftScale);
		}
		if (pair < pairs && mActiveChannels.Test(left + 1))
		{
			mRightInputs[pair].AssignForReading(inInput, left + 1);
			mRightOutputs[pair].Assign(outOutput, left + 1);
			ProcessSide(mRightInputs[pair], mRightOutputs[pair], !mPanLeft, mRightScale);
		}
	}
}

void BalanceProcessor::ProcessSide(dsp::AudioBufferChannel const& inInput, dsp::AudioBufferChannel& outOutput,
	bool inIsCopied, float inScale)
{
	if (inIsCopied)
	{
		outOutput.CopyFrom(inInput, inInput.GetUseSize());
	}
	else
	{
		outOutput.CopyFromScale(inInput, inScale);
	}
}

} // namespace SN
