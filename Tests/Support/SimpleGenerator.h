#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "Support/Answers.h"
#include "Support/Pull.h"
#include "Vexilon/ITimeTransform.h"

namespace SN::Testing
{

// A generator at 48000 Hz that does nothing but what a subclass says: the least that a graph needs, without
// a record of its calls.
class SimpleGenerator : public Answers<IAudioGenerator, IAudioGeneratorPrivate>
{
public:
	explicit SimpleGenerator(unsigned inChannels)
		: mNumChannels(inChannels)
	{
	}

	InterfaceRef<IAudioGenerator> Clone() override { return InterfaceRef<IAudioGenerator>::FromThis(this); }
	bool HasHistory() override { return false; }
	TickTime GetDelay() override { return kTimeZero; }
	void Preroll(TickTime const&, bool) override {}
	void FillInitialDelay(TickTime const&, TickTime const&, bool, bool) override {}
	void AccumulatePrefetchRequests(PrefetchRange const&, PrefetchType, PrefetchRequestAccumulator&) override
	{
	}
	void Reset() override {}
	void InitializeAudioFilters() override {}
	void ShutdownAudioFilters() override {}
	unsigned GetNumChannels() override { return mNumChannels; }
	unsigned GetNumOutputChannels() override { return mNumChannels; }
	AudioChannelLayout GetAudioChannelLayout() override
	{
		return mNumChannels == 1   ? VX::kAudioChannelLayout_Mono
			   : mNumChannels == 2 ? VX::kAudioChannelLayout_Stereo
								   : VX::CreateAudioChannelLayout(
										 VX::kAudioChannelTypeAdaptive, static_cast<int>(mNumChannels));
	}
	FrameRate GetGeneratorFrameRate() override { return k48000Hz; }

private:
	unsigned mNumChannels;
};

// Shifts by so many frames at 48000 Hz.
class ShiftTransform final : public Answers<VX::ITimeTransform>
{
public:
	explicit ShiftTransform(long long inFrames = 0)
		: mShift(inFrames, k48000Hz)
	{
	}

	TickTime GetTime(TickTime const& inTime) override { return inTime + mShift; }

private:
	TickTime mShift;
};

} // namespace SN::Testing
