#pragma once

#include "ResamplerRuns.h"

#include <cstdint>

// One channel of the time scaler written again in the plainest way, sample by sample and bin by bin: what the engine's
// own must come near to.
namespace SN::Testing
{

struct ScalerRequest
{
	double mRatio = 1.0;
	double mPitchFactor = 1.0;
	unsigned mFFTSize = 2048;
	unsigned mWindowMode = 1;
	double mSampleRate = 48000.0;
	std::int64_t mEndOfInput = 1000000000;
};

class ReferenceTimeScaler
{
public:
	// inUsesOwnTransform: the engine's Fourier transform in place of one in double precision.
	ReferenceTimeScaler(ScalerRequest const& inRequest, bool inUsesOwnTransform);

	double GetRatio() const { return static_cast<double>(mRatio); }
	unsigned CountInput(unsigned inNumOutput);
	unsigned CountOutput(unsigned inNumInput);
	// The outputs that are written.
	Signal Process(Signal const& inInput, unsigned inNumOutput);
	float GetEnergyGain() const { return mEnergyGain; }

private:
	// Of the energy.
	struct Statistics
	{
		float mMeanSquare = 0.02f;
		float mMean = 0.0f;
		float mVariance;
		float mCount = 2.0f;

		void Update(float inX, float inLimit);
	};

	void FindGeometry(double inRatio);
	void MakeWindows();
	void Transform(Signal& ioData, int inSize, bool inInverse) const;
	void Fold();
	void Analyse();
	void Synthesise();
	void Add();
	void GiveOut(Signal& ioOutput, unsigned inNumOutput);
	void NextFrame();

	bool mUsesOwnTransform;
	float mSampleRate;
	float mRatio = 0.0f;
	float mPitchFactor;
	int mFFTSize;
	int mWindowLength = 0;
	int mHalf = 0;
	int mAnalysisHop = 0;
	int mSynthesisHop = 0;
	int mResampledSize = 0;
	int mInverseSize = 0;
	int mResampledHop = 0;
	float mBinFrequency = 0.0f;
	float mAnalysisFrameRate = 0.0f;
	float mSynthesisFrameRate = 0.0f;
	Signal mAnalysisWindow;
	Signal mSynthesisWindow;

	Signal mAnalysisRing;
	Signal mSynthesisRing;
	Signal mSpectrum;
	Signal mResynthesis;
	Signal mPreviousPhase;
	Signal mAccumulatedPhase;
	std::int64_t mAnalysisPosition = 0;
	std::int64_t mSynthesisPosition = 0;
	std::size_t mWriteIndex = 0;
	std::size_t mReadIndex = 0;
	std::int64_t mInputCount = 0;
	std::int64_t mOutputCount = 0;
	std::int64_t mEndOfInput;
	int mSamplesPerHop = 0;
	int mSamplesSinceHop = 0;
	int mFinal = 0;
	bool mIsEndOfInput = false;
	bool mIsFirst = true;

	Statistics mInput{.mVariance = 0.07f};
	Statistics mOutput{.mVariance = 0.05f};
	float mInputLimit = 0.0f;
	float mOutputLimit = 0.0f;
	float mEnergyGain = 1.1f;
	Signal mSurplus;
};

} // namespace SN::Testing
