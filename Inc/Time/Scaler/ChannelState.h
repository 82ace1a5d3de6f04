#pragma once

#include "Time/Scaler/EnergyStatistics.h"
#include "Time/Scaler/ScalerAnalysis.h"
#include "Time/Scaler/ScalerSynthesis.h"
#include "Time/Scaler/SurplusSamples.h"

#include <array>

namespace SN
{

// One channel of a time scaler, in the steps of a frame: Read, MakeFrame, the runs of the statistics, GiveOut. The scaler
// takes all channels through a step before the next one, so that the statistics of several run side by side.
class ChannelState
{
public:
	// Starts anew. Throws std::bad_alloc.
	void Init(ScalerFrame const& inFrame);

	// The block that the next steps work on. Takes the surplus of earlier blocks out first; false when that suffices.
	bool BeginBlock(float const* inInput, unsigned inNumInput, float* outOutput, unsigned inNumOutput);
	// Takes input until a hop is whole; false when the input is used up first.
	bool Read();
	void MakeFrame(ScalerFrame& ioFrame);
	// The samples that the frame has taken in and made, but for the last of each.
	using Runs = std::array<zorvaccelerate::utility::MeansRun, 2>;
	Runs GetRuns();
	// Once the runs are through. False at the end of the input.
	bool GiveOut(ScalerFrame const& inFrame);
	// Zeros to the block's end; returns how many outputs come before them.
	unsigned EndBlock();

	unsigned GetSurplusCount() const { return mSurplus.GetCount(); }

private:
	void MatchEnergy(unsigned inCount);
	void Write(float const* inSamples, unsigned inCount);

	ScalerAnalysis mAnalysis;
	ScalerSynthesis mSynthesis;
	SurplusSamples mSurplus;

	EnergyStatistics mInputStatistics;
	EnergyStatistics mOutputStatistics;
	float mEnergyGain = 0.0f;

	// Of the present frame: what the statistics and the output look at.
	AlignedSamples mHop;
	AlignedSamples mFinal;

	float const* mInput = nullptr;
	unsigned mNumInput = 0;
	float* mOutput = nullptr;
	unsigned mNumOutput = 0;
	unsigned mWritten = 0;
};

} // namespace SN
