#pragma once

#include "Sonaro/IAsyncAudioSource.h"
#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioSource.h"
#include "Sonaro/IAudioSourceFile.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "Support/Answers.h"
#include "Support/Pull.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace SN::Testing
{

// A value that says where a sample came from: the channel, and its frame from -1000000 to 1000000. Never
// 0, exact in 32 bits, so that one wrong sample anywhere shows its origin.
float PositionSample(unsigned long long inChannel, long long inFrame);

// A sample by channel and frame.
using SampleFunction = std::function<float(unsigned long long inChannel, long long inFrame)>;

// Writes inFunction's samples from inTime on into all channels up to inChannels, flags the others; in reverse
// from the last to the first.
void FillFrom(SampleFunction const& inFunction, unsigned inChannels, TickTime const& inTime,
	FrameRate const& inFrameRate, dsp::AudioBuffer& outBuffer, bool inReverse = false);

// One call that a fake has heard.
struct Call
{
	friend bool operator==(Call const&, Call const&) = default;
	friend std::ostream& operator<<(std::ostream& ioStream, Call const& inCall);

	std::string mName;
	TickTime mTime;
	// Frames, ticks or a flag, as the call has it.
	long long mAmount = 0;
	bool mReverse = false;
};

// A generator whose samples come from a function of channel and frame, in any direction, and which keeps
// a record of its calls.
class FakeGenerator : public Answers<IAudioGenerator, IAudioGeneratorPrivate>
{
public:
	static constexpr Identifier<FakeGenerator> kIdentifier{0x8d1b1c7d9a2f4e03ull, 0x95b16f2c44ae0d71ull};

	explicit FakeGenerator(unsigned inChannels, SampleFunction inFunction = PositionSample,
		FrameRate const& inFrameRate = k48000Hz,
		std::shared_ptr<std::vector<Call>> const& inLog = std::make_shared<std::vector<Call>>())
		: mLog(inLog),
		  mNumChannels(inChannels),
		  mFunction(std::move(inFunction)),
		  mFrameRate(inFrameRate)
	{
	}

	InterfaceRef<IAudioGenerator> Clone() override;
	bool HasHistory() override { return mHasHistory; }
	TickTime GetDelay() override { return mDelay; }
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) override;
	void Reset() override { Record({"Reset", {}, 0, false}); }
	void InitializeAudioFilters() override { Record({"InitializeAudioFilters", {}, 0, false}); }
	void ShutdownAudioFilters() override { Record({"ShutdownAudioFilters", {}, 0, false}); }

	unsigned GetNumChannels() override { return mNumChannels; }
	unsigned GetNumOutputChannels() override { return mNumChannels; }
	AudioChannelLayout GetAudioChannelLayout() override;
	FrameRate GetGeneratorFrameRate() override { return mFrameRate; }

	// Off where allocations count.
	bool mRecordsCalls = true;
	std::shared_ptr<std::vector<Call>> const mLog;
	std::vector<Call>& mCalls = *mLog;
	TickTime mDelay;
	bool mHasHistory = false;
	// The channel count of the buffer that the last pull brought.
	unsigned long long mSeenChannels = 0;

protected:
	void* QueryMap(GUID const& inIdentifier) override;
	void Record(Call const& inCall) const;

	unsigned const mNumChannels;
	SampleFunction const mFunction;

private:
	FrameRate const mFrameRate;
};

// A processor that multiplies by a constant and keeps a record of its calls.
class FakeProcessor final : public Answers<IAudioProcessor>
{
public:
	explicit FakeProcessor(float inGain)
		: mGain(inGain)
	{
	}

	InterfaceRef<IAudioProcessor> Clone(
		FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) override;
	bool HasHistory() override { return false; }
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime) override;
	void Preroll(TickTime const& inTime, bool inReverse) override;
	void Reset() override { mCalls.push_back({"Reset", {}, 0, false}); }
	void InitializeAudioFilter() override { mCalls.push_back({"InitializeAudioFilter", {}, 0, false}); }
	void ShutdownAudioFilter() override { mCalls.push_back({"ShutdownAudioFilter", {}, 0, false}); }
	TickTime GetDelay() override { return mDelay; }

	std::vector<Call> mCalls;
	TickTime mDelay;

private:
	float mGain;
};

// Which further interfaces a fake source answers for.
struct SourceKind
{
	bool mIsFile = false;
	bool mIsAsync = false;
};

// A source of so many frames, silent beyond them, whose samples come from a function; records its calls.
class FakeSource final : public IAudioSource, public IAudioSourceFile, public IAsyncAudioSource
{
public:
	FakeSource(unsigned inChannels, long long inFrames, SourceKind const& inKind = {},
		SampleFunction inFunction = PositionSample, FrameRate const& inFrameRate = k48000Hz);

	FrameRate GetFrameRate() override { return mFrameRate; }
	TickTime GetLength() override { return {mFrames, mFrameRate}; }
	unsigned GetNumChannels() override { return mNumChannels; }
	AudioChannelLayout GetAudioChannelLayout() override;
	ImmutableString GetName() override { return ImmutableString("fake"); }
	void ReadAudio(VX::BinaryData const& inOptions, dsp::AudioBuffer& inBuffer, TickTime const& inTime,
		bool inFlag) override;

	bool IsGrowing() override { return mIsGrowing; }
	ImmutableString GetPath() override { return GetName(); }
	unsigned GetRevision() override { return 0; }
	TickTime GetDuration() override { return mDuration; }

	void PrefetchAudioData(
		unsigned long long const& inTimeStamp, TickTime const& inTime, unsigned inNumSamples) override;
	int ReadPrefetchedAudio(TickTime const& inTime, dsp::AudioBuffer& inBuffer) override;
	int GetPrefetchState() override { return kSuccess; }

	// Off where allocations count.
	bool mRecordsCalls = true;
	std::vector<Call> mCalls;
	bool mIsGrowing = false;
	TickTime mDuration;

protected:
	void* QueryMap(GUID const& inIdentifier) override;

private:
	void Record(char const* inName, TickTime const& inTime, long long inAmount);
	void Fill(TickTime const& inTime, dsp::AudioBuffer& outBuffer);

	unsigned mNumChannels;
	long long mFrames;
	SourceKind mKind;
	SampleFunction mFunction;
	FrameRate mFrameRate;
};

} // namespace SN::Testing
