#include "Time/Scaler/ChannelState.h"

#include "Time/Scaler/ScalerFrame.h"
#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>
#include <cmath>

namespace SN
{

namespace
{

constexpr float kInputVariance = 0.07f;
constexpr float kOutputVariance = 0.05f;
constexpr float kFirstEnergyGain = 1.1f;
// A gain outside of them is kept in mind and not applied.
constexpr float kLeastGain = 0.2f;
constexpr float kMostGain = 5.0f;

} // namespace

void ChannelState::Init(ScalerFrame const& inFrame)
{
	ScalerGeometry const& geometry = inFrame.mGeometry;
	mAnalysis.Init(inFrame);
	mSynthesis.Init(inFrame);
	mSurplus.Clear();
	mInputStatistics = EnergyStatistics(kInputVariance, geometry.mInputStatisticsLimit);
	mOutputStatistics = EnergyStatistics(kOutputVariance, geometry.mOutputStatisticsLimit);
	mEnergyGain = kFirstEnergyGain;
	mHop.Clear(static_cast<unsigned>(std::max(geometry.mAnalysisHop, geometry.mFirstHop)));
	mFinal.Clear(
		static_cast<unsigned>(static_cast<float>(geometry.mSynthesisHop) / geometry.mPitchFactor) + 1);
}

bool ChannelState::BeginBlock(
	float const* inInput, unsigned inNumInput, float* outOutput, unsigned inNumOutput)
{
	mInput = inInput;
	mNumInput = inNumInput;
	mOutput = outOutput;
	mNumOutput = inNumOutput;
	bool const suffices = mSurplus.GetCount() > inNumOutput;
	mWritten = mSurplus.Take(inNumOutput, outOutput);
	return !suffices;
}

bool ChannelState::Read()
{
	unsigned const count = mAnalysis.Read(mInput, mNumInput);
	mInput += count;
	mNumInput -= count;
	return mAnalysis.HasHop();
}

void ChannelState::MakeFrame(ScalerFrame& ioFrame)
{
	mAnalysis.CopyHop(mHop.Get());
	mAnalysis.MakeBins(ioFrame);
	mSynthesis.AddFrame(ioFrame);
	mSynthesis.CopyFinal(mFinal.Get());
}

ChannelState::Runs ChannelState::GetRuns()
{
	return {mInputStatistics.GetRun(mHop.Get(), mAnalysis.GetHop()),
		mOutputStatistics.GetRun(mFinal.Get(), mSynthesis.GetFinalCount())};
}

bool ChannelState::GiveOut(ScalerFrame const& inFrame)
{
	mInputStatistics.Finish(mHop.Get(), mAnalysis.GetHop());
	mOutputStatistics.Finish(mFinal.Get(), mSynthesis.GetFinalCount());
	// The outputs that so much input may have.
	double const share = static_cast<double>(inFrame.mGeometry.mRatio) / inFrame.mGeometry.mPitchFactor;
	auto const target =
		static_cast<std::int64_t>(std::floor(share * static_cast<double>(mAnalysis.GetInputCount()) + 0.5));
	auto const count = static_cast<unsigned>(
		std::clamp<std::int64_t>(target - mSynthesis.GetOutputCount(), 0, mSynthesis.GetFinalCount()));
	MatchEnergy(count);
	Write(mFinal.Get(), count);
	mSynthesis.Remove(count);
	bool const hasEnded = mAnalysis.GetHop() == 0 && count == 0;
	mAnalysis.Advance(inFrame);
	mSynthesis.Advance(inFrame);
	return !hasEnded;
}

// The first inCount samples of mFinal, with a gain that moves to where the output has the input's energy.
void ChannelState::MatchEnergy(unsigned inCount)
{
	float* const samples = mFinal.Get();
	float const input = mInputStatistics.GetVariance();
	float const output = mOutputStatistics.GetVariance();
	if (inCount > 0 && input > 0.0f && output > 0.0f)
	{
		float const gain = std::sqrt(input / output);
		if (gain >= kLeastGain && gain <= kMostGain)
		{
			for (unsigned i = 0; i < inCount; ++i)
			{
				float const former = mEnergyGain;
				mEnergyGain = 0.5f * gain + 0.5f * former;
				if (mEnergyGain == former)
				{
					// There it stays.
					zorvaccelerate::utility::MulConstant_InPlace(inCount - i, samples + i, mEnergyGain);
					break;
				}
				samples[i] *= mEnergyGain;
			}
		}
		else
		{
			mEnergyGain = gain;
		}
	}
	for (unsigned i = 0; i < inCount; ++i)
	{
		float const sample = samples[i];
		samples[i] = sample > 1.0f ? 1.0f : sample < -1.0f ? -1.0f : sample;
	}
}

void ChannelState::Write(float const* inSamples, unsigned inCount)
{
	unsigned const direct = std::min(inCount, mNumOutput - mWritten);
	std::copy_n(inSamples, direct, mOutput + mWritten);
	mWritten += direct;
	mSurplus.Append(inSamples + direct, inCount - direct);
}

unsigned ChannelState::EndBlock()
{
	std::fill(mOutput + mWritten, mOutput + mNumOutput, 0.0f);
	return mWritten;
}

} // namespace SN
