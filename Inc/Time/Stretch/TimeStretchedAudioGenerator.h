#pragma once

#include "AudioRender/Source/AudioGeneratorDecorator.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Time/Stretch/SourceRing.h"
#include "Time/Stretch/TimeTransformToRatioConverter.h"
#include "Vexilon/ITimeTransform.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"
#include "zorvcore/threads/RecursiveMutex.h"

#include <memory>
#include <vector>

namespace SN
{

struct TimeStretchSettings
{
	InterfaceRef<IAudioGenerator> mGenerator{};
	FrameRate mFrameRate{};
	InterfaceRef<IAudioRenderContext> mRenderContext{};
	InterfaceRef<VX::ITimeTransform> mTimeTransform{};
	bool mMaintainPitch = true;
	// Where the source's audio ends.
	TickTime mSourceEndTime{};
	// Is added to times that go in, and taken off those at which the generator is read.
	TickTime mSourceOffset{};
	bool mPreferAccuracy = false;
	float mMinRatio = 0.1f;
	float mMaxRatio = 10.0f;
};

// Plays a generator along a curve of time against time, which gives a ratio for each block; an engine stretches by it,
// with the pitch kept or following as on a tape. What the engine reads ahead comes through a ring.
//
// Time     A pull at another time than the one that follows the last pull is a jump: the ring and the engine begin
//          afresh there. Times up to 0 are the beginning of the source. The ratio is in single precision; over an hour
//          at a speed that is not a simple fraction, that may add up to some ten samples.
// Latency  The delay that is reported is what the engine is given before it starts, which the preroll has read.
// Memory   Contiguous pulls allocate nothing. Jumps do when they prefetch.
// Threads  One lock is held by Preroll, FillInitialDelay, AccumulatePrefetchRequests, GetAudioData and Reset, on the
//          render path too: the requests may be gathered by another thread than the one that pulls.
// Errors   An empty transform raises the null-pointer exception.
class TimeStretchedAudioGenerator final : public AudioGeneratorDecorator
{
public:
	// eNullPointer without a context; eInvalidArgument for a rate, channels or a block size that no engine takes.
	static int Create(TimeStretchSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator);

	// With the source's own speed undone before it, and read-ahead after it, which ends at inEndTime.
	static int CreateWithPrefetch(TimeStretchSettings const& inSettings, double inSpeed,
		InterfaceRef<IAudioRenderContext> const& inPrefetchContext, TickTime const& inEndTime,
		InterfaceRef<IAudioGenerator>* outGenerator);

	TimeStretchedAudioGenerator() = default;
	~TimeStretchedAudioGenerator() override;

	InterfaceRef<IAudioGenerator> Clone() override;
	bool HasHistory() override { return true; }
	TickTime GetDelay() SONARO_NONBLOCKING override;
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	// Reads ahead until all of the delay is there, or until inDelayTime of it is.
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING override;
	void Reset() override;

	std::u16string GetNodeName() override { return u"TimeStretchedAudioGenerator"; }

private:
	using OmegaEngine = dsp::stretch::omega::OmegaEngine;

	struct EngineDeleter
	{
		void operator()(OmegaEngine* inEngine) const { OmegaEngine::Destroy(inEngine); }
	};

	int Init(TimeStretchSettings const& inSettings);
	int SetUpEngine();

	TickTime MapTime(TickTime const& inTime) const;
	// From there to the end of the source, at least 0.
	unsigned CountRemaining(TickTime const& inTime) const;
	unsigned CountReadAhead(TickTime const& inTime) const;
	TickTime ToDuration(unsigned inSamples) const;

	void FillRing(TickTime const& inTime, bool inReverse, bool inWithDelay);
	void ReadSource(dsp::AudioBuffer& ioBuffer, unsigned inCount, bool inReverse);
	void Jump(TickTime const& inTime, bool inReverse);
	void SetEngineFor(unsigned inNumSamples);
	// False when the source cannot give as much.
	bool PullSource(dsp::AudioBuffer& ioBuffer, unsigned inNeeded, bool inReverse);
	void RunEngine(dsp::AudioBuffer& ioBuffer, unsigned inNumOutput, unsigned inNeeded);

	zorvcore::threads::RecursiveMutex mMutex{"SN::TimeStretchedAudioGenerator"};
	TimeStretchSettings mSettings;
	// That of the generator, in which source and output are counted.
	FrameRate mSampleRate;
	unsigned mBlockSize = 0;
	// Made by each preroll.
	std::shared_ptr<TimeTransformToRatioConverter> mRatioConverter;
	std::unique_ptr<OmegaEngine, EngineDeleter> mEngine;
	dsp::stretch::omega::StreamSettings mStreamSettings;
	bool mIsEngineStarted = false;
	unsigned mStartupSamples = 0;
	unsigned mMaxInputPerBlock = 0;
	SourceRing mRing;
	// What goes into the engine, channel after channel, and for channels that a caller lacks, what comes out.
	std::vector<float> mInputScratch;
	std::vector<float*> mInputPointers;
	std::vector<float> mSpareOutput;
	std::vector<float*> mOutputPointers;
	dsp::AudioBuffer mBlock;
	// Where the source is read next.
	TickTime mSourcePosition = -kTimeMax;
	TickTime mExpectedTime;
	TickTime mInitialDelay;
	unsigned mFilledSamples = 0;
};

} // namespace SN
