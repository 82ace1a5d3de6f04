#pragma once

#include "Sonaro/IAudioResamplerSpecialized.h"

#include <array>
#include <vector>

namespace SN
{

// The frame of the resamplers at a fixed ratio. Positions are counted in parts of an input sample, from the first
// sample of the coming block; those below 0 lie in the block before, whose last samples stay in the history.
class SpecializedResampler : public Implements<SpecializedResampler, IAudioResamplerSpecialized>
{
public:
	// Allocates, and resets to position 0.
	void Init(unsigned inNumChannels);

	void Reset(unsigned long long inPosition) final;
	unsigned GetOutputLatency() SONARO_NONBLOCKING final { return mShape.mOutputLatency; }
	unsigned GetInputLatency() SONARO_NONBLOCKING final { return 10; }
	unsigned GetInputSampleCount(unsigned inNumOutput) SONARO_NONBLOCKING final;
	void Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput,
		unsigned inNumOutput) SONARO_NONBLOCKING final;
	InterfaceRef<IAudioResamplerSpecialized> GetSelfReference() final
	{
		return InterfaceRef<IAudioResamplerSpecialized>::FromThis(this);
	}

protected:
	// Every mParts-th output, inCount of them. inTaps is the lowest tap of the first one.
	using FilterPhase = void (*)(unsigned inCount, float const* inTaps, float* outOutputs);

	static constexpr unsigned kMostParts = 3;

	struct Shape
	{
		// Of an input sample, and how many of them an output advances.
		unsigned mParts;
		unsigned mStep;
		unsigned mOutputLatency;
		// By what remains of a position after the whole samples.
		std::array<FilterPhase, kMostParts> mPhases;
	};

	explicit SpecializedResampler(Shape const& inShape)
		: mShape(inShape)
	{
	}

	// The sum of the products of coefficients and samples, from the lowest tap upward in single precision.
	template <unsigned kParts, unsigned kStep, auto kCoefficients>
	static void Filter(unsigned inCount, float const* inTaps, float* outOutputs)
	{
		for (unsigned i = 0; i < inCount; ++i)
		{
			float sum = kCoefficients[0] * inTaps[kStep * i];
			for (unsigned tap = 1; tap < kCoefficients.size(); ++tap)
			{
				sum = sum + kCoefficients[tap] * inTaps[kStep * i + tap];
			}
			outOutputs[kParts * i] = sum;
		}
	}

	// The phase that stands on an input sample, for both ratios. Its gain is not quite 1.
	static constexpr std::array<float, 9> kOnSample{2.3786186e-9f, -7.942459e-9f, 1.6327997e-8f,
		-2.4245537e-8f, 0.98899406f, -2.4245537e-8f, 1.6327997e-8f, -7.942459e-9f, 2.3786186e-9f};

private:
	// The sample 1 + k places before the block, in row k.
	static constexpr unsigned kHistoryRows = 7;
	// A filter reaches from 4 samples before its position to 5 after it.
	static constexpr int kTapsBefore = 4;
	static constexpr unsigned kMostTaps = 10;

	// One channel of a block.
	struct Channel
	{
		float const* mSamples;
		// Those below count; further ones read as zeros.
		unsigned mEnd;
		float* mHistory;
	};

	void FilterChannel(Channel const& inChannel, unsigned inNumOutput, float* outOutputs) const;
	// Outputs whose taps may lie outside the block.
	void FilterEdge(Channel const& inChannel, unsigned inFirst, unsigned inEnd, float* outOutputs) const;
	float SampleAt(Channel const& inChannel, long long inIndex) const;
	void RenewHistory(Channel const& inChannel, unsigned inNumInput) const;
	// The input sample that an output stands on or comes after.
	long long IndexOf(unsigned inOutput) const;
	FilterPhase PhaseOf(unsigned inOutput) const;

	Shape const mShape;
	unsigned long long mNumChannels = 0;
	// Of the next output.
	long long mPosition = 0;
	std::vector<float> mHistory;
};

} // namespace SN
