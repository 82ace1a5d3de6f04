#pragma once

#include "stretch/omega/OnsetDetector.h"
#include "stretch/omega/PhaseVocoder.h"
#include "stretch/omega/SampleHistory.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include <array>
#include <vector>

namespace dsp::stretch::omega
{

struct SpliceMatch;
struct SpliceRange;

// Plays stretches of the source as they are, and goes on elsewhere whenever they have got too far from their place:
// where the sound resembles most what would have followed, by a cross-fade. All channels are spliced at once. Where no
// place is quite alike and the sound is steady, as in a chord, a phase vocoder goes on until it changes.
//
//	source --> spliced: "middle" --> rate converted by the pitch's factor --> output
//
// Both clocks below are linear from an anchor on, at which ratio or pitch changed last, so that blocks of any size
// give the same bits at a ratio that stays.
class SpliceEngine final : public OmegaEngine
{
public:
	SpliceEngine(
		double inSampleRate, unsigned inNumChannels, unsigned inBlockSize, OmegaLimits const& inLimits);

	void SetRatio(float inStartRatio, float inEndRatio) override;
	void SetPitch(float inStartSemitones, float inEndSemitones) override;
	unsigned GetOutputLimit() const override { return mBlockSize; }
	unsigned GetInputForBlock(unsigned inBlockSize, float inRatio) const override;
	unsigned GetInputNeeded(unsigned inNumOutput) const override;
	void Begin(float inSampleRate, StreamSettings const* inSettings, unsigned inNumInput) override;
	void SetSourceRemaining(unsigned inNumInput) override;
	void Process(unsigned inNumOutput, float const* const* inInputs, float* const* outOutputs) override;
	void End() override {}

private:
	// The most that the middle is made in at a time.
	static constexpr unsigned kStep = 64;
	// Of the filter that reads between samples, and those of them before the place.
	static constexpr unsigned kTaps = 32;
	static constexpr unsigned kTapsBefore = 15;

	// Where the best splice is less similar than this, its notes would be heard detuned.
	static constexpr double kSame = 0.9995;
	static constexpr std::int64_t kNoTonePlace = INT64_MIN;
	// The highest speed for which enough of the source is taken in for frames at their very place.
	static constexpr double kFastestTones = 2.0;
	// Stretches that are more similar fade in a straight line, so that their phases move evenly.
	static constexpr double kAlike = 0.95;

	// A stretch of the source: middle sample m is that at m + mOffset, and mFraction beyond it.
	struct Segment
	{
		std::int64_t mOffset = 0;
		double mFraction = 0.0;
		std::array<float, kTaps> mTaps{};
	};

	// Lengths in samples.
	struct Lengths
	{
		// How far from what keeps the place a splice is looked for first, and how far off the place stretches may get.
		unsigned mSearch = 0;
		unsigned mOff = 0;
		// The middle is decided on in steps of this.
		unsigned mStep = kStep;
		// The least distance of a splice.
		unsigned mLeast = 0;
		unsigned mWindow = 0;
		unsigned mFade = 0;
		unsigned mLongFade = 0;
		unsigned mLongestFade = 0;
		// Of the fade before an onset, the time between its end and the onset, and what follows an onset untouched.
		unsigned mOnsetFade = 0;
		unsigned mGuard = 0;
		unsigned mAttack = 0;
	};

	struct Fade
	{
		double mLength = 0.0;
		double mSimilarity = 0.0;
	};

	// What a decision looks at, in samples of the source.
	struct Moment
	{
		// Where the source ought to be, and where it is.
		double mIdeal = 0.0;
		std::int64_t mPlace = 0;
		// The next onset, or OnsetDetector::kNone; the last one that was passed; the middle samples until the next one
		// is due, and where the source would have to be to reach it in time.
		std::int64_t mOnset = OnsetDetector::kNone;
		std::int64_t mLastOnset = 0;
		double mLead = 0.0;
		double mPath = 0.0;
	};

	void InitTones();
	void SetReach(float inMilliseconds);
	void Anchor();
	double IdealAt(std::int64_t inMiddle) const;
	double MiddleAt(std::int64_t inOutput) const;
	std::int64_t FilterReach() const;
	std::int64_t MiddleEndFor(std::int64_t inOutput) const;

	void TakeInput(float const* const* inInputs, unsigned inNumInput);
	void MakeMiddle(std::int64_t inEnd);
	void Render(unsigned inCount);
	void FillGains(unsigned inCount, float* outGains, float* outFormerGains) const;
	void ReadPresent(unsigned inChannel, unsigned inCount, float* outSamples) const;
	void ReadSegment(Segment const& inSegment, unsigned inChannel, unsigned inCount, float* outSamples) const;
	static void ReadStretch(Segment const& inSegment, SampleHistory const& inSource, unsigned inChannel,
		std::int64_t inPosition, unsigned inCount, float* outSamples);
	void KeepWithinHistory(Segment& ioSegment, unsigned inCount) const;
	void Convert(unsigned inNumOutput, float* const* outOutputs) const;
	void ConvertSample(double inPlace, unsigned inIndex, float* const* outOutputs) const;

	void Decide();
	double GetLimit() const;
	std::int64_t GetHorizon() const;
	Moment LookAhead() const;
	bool MeetOnset(Moment const& inMoment);
	void Splice(Moment const& inMoment, bool inIsForced);
	double TimeUntilOnsetFade(Moment const& inMoment) const;
	SpliceRange FindRange(Moment const& inMoment, bool inIsForced) const;
	double TimeUntilOff(Moment const& inMoment, SpliceMatch const& inMatch) const;
	Fade ChooseFade(Moment const& inMoment, SpliceMatch const& inMatch) const;
	void StartFade(double inDistance, double inSimilarity, double inLength);
	bool IsEndNear(std::int64_t inPlace) const;

	bool AreTonesPlaying() const { return mToneFrames != 0; }
	bool IsToneComplete() const { return mToneFrames >= PhaseVocoder::kOverlap; }
	bool StartTones(Moment const& inMoment);
	std::int64_t FindTonePlace() const;
	bool IsFreeOfOnsets(std::int64_t inStart, std::int64_t inEnd) const;
	void ContinueTones();
	void LeaveTones(Moment const& inMoment, double inLength);
	SpliceMatch FindAfterTones(Moment const& inMoment);
	void SumTones();
	void MixTones(unsigned inChannel, unsigned inCount, float* ioSamples) const;

	double mSampleRate;
	unsigned mNumChannels;
	unsigned mBlockSize;
	OmegaLimits mLimits;
	Lengths mLengths;
	StreamSettings mSettings;
	std::vector<float> mChannelWeights;
	// Beyond the ideal place, the source that is always there, and what changes of ratio add to it.
	unsigned mLookAhead = 0;
	unsigned mSlack = 0;

	float mRatio = 1.0f;
	float mSemitones = 0.0f;
	// Source and middle samples for an output sample, source samples for a middle one.
	double mAdvance = 1.0;
	double mPitch = 1.0;
	double mStretch = 1.0;
	std::int64_t mOutput = 0;
	std::int64_t mAnchorOutput = 0;
	double mAnchorSource = 0.0;
	double mAnchorMiddle = 0.0;

	SampleHistory mSource;
	// The weighted sum of all channels, and that at a lower rate.
	SampleHistory mSound;
	SampleHistory mCoarse;
	OnsetDetector mOnsets;
	SampleHistory mMiddle;

	Segment mSegment;
	Segment mNext;
	unsigned mFadeLength = 0;
	unsigned mFaded = 0;
	double mFadeSimilarity = 1.0;

	// Steady sound, while there are frames of it. What their coverage lacks of 1 is played from the stretch before them.
	PhaseVocoder mTones;
	bool mMayPlayTones = true;
	unsigned mToneFrames = 0;
	// In middle samples: the end of the present hop, and the time from which on sound may be found steady again.
	std::int64_t mToneHopEnd = 0;
	std::int64_t mToneRetry = 0;
	// A sum of all channels, and that at a lower rate.
	SampleHistory mToneSound;
	SampleHistory mToneCoarse;
};

} // namespace dsp::stretch::omega
