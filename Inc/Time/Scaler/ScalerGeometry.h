#pragma once

#include <cstdint>
#include <optional>

namespace SN
{

// What a time scaler is asked for.
struct ScalerSettings
{
	float mRatio;
	float mPitchFactor;
	float mSampleRate;
	unsigned mFFTSize;
	unsigned mWindowMode;
	// Input samples after which the output ends.
	std::int64_t mEndOfInput = 1000000000;
};

// The sizes, hops and rates of a phase vocoder, in samples and hertz. Analysis is the input's side, synthesis the
// output's. Windows overlap eight times on the side that moves faster, and hops are whole, which makes the ratio a
// fraction of two of them.
//
// The pitch changes by resampling: a frame is put together in mInverseSize samples, of which mResampledSize are played
// in the time of mFFTSize.
struct ScalerGeometry
{
	// Empty where there is no hop of a sample, or no transform of such a size. inFormerLength: the window's length
	// before, which an unknown mode keeps.
	static std::optional<ScalerGeometry> Make(ScalerSettings const& inSettings, int inFormerLength);

	// mFFTSize over mResampledSize.
	float mPitchFactor = 1.0f;
	// Output over input: synthesis hop over analysis hop.
	float mRatio = 0.0f;
	int mFFTSize = 0;
	// Of both windows; odd.
	int mWindowLength = 0;
	int mWindowHalf = 0;
	int mRingLength = 0;
	int mAnalysisHop = 0;
	int mSynthesisHop = 0;
	int mResampledSize = 0;
	int mInverseSize = 0;
	int mResampledHop = 0;

	// Hertz between two bins, and frames a second.
	float mBinFrequency = 0.0f;
	float mAnalysisFrameRate = 0.0f;
	float mSynthesisFrameRate = 0.0f;

	// Where the first frame has its centre: the last of its samples are the first ones of the input.
	std::int64_t mAnalysisStart = 0;
	std::int64_t mSynthesisStart = 0;
	// Input samples that it needs.
	int mFirstHop = 0;
	std::int64_t mEndOfInput = 0;

	// Samples that the measure of energy remembers: seven seconds.
	float mInputStatisticsLimit = 0.0f;
	float mOutputStatisticsLimit = 0.0f;

private:
	// The window's length; hops and ratio, which are false where one of them is 0.
	void SetWindow(unsigned inMode);
	bool SetHops(float inRatio);
	bool SetSizes();
	void SetStart(ScalerSettings const& inSettings);
};

} // namespace SN
