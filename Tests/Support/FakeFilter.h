#pragma once

#include "Sonaro/IAudioFilter.h"
#include "Support/Answers.h"
#include "zorvaudiodsp/AudioDelayBuffer.h"
#include "zorvcore/classref/InterfaceRef.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace SN::Testing
{

// An effect that is late by its latency and multiplies by its parameter 0. It keeps a record of its calls.
class FakeFilter final : public Answers<IAudioFilter>
{
public:
	explicit FakeFilter(unsigned inLatency = 0, bool inHasHistory = false)
		: mLatency(inLatency),
		  mHasHistory(inHasHistory)
	{
		mDelay.Init(kChannels, mLatency, kMaxFrames);
	}

	void SetParameter(unsigned inIndex, float inValue) override { Set("set", inIndex, inValue); }
	void SetParameterFromMainThread(unsigned inIndex, float inValue) override
	{
		Set("main", inIndex, inValue);
	}
	float GetParameter(unsigned inIndex) override { return mParameters.at(inIndex); }
	void GetParameterText(std::u16string& outText, unsigned inIndex) override
	{
		outText = u"parameter " + std::u16string(1, static_cast<char16_t>(u'0' + inIndex));
	}
	unsigned GetLatency() override { return mLatency; }
	void Clone(InterfaceRef<IAudioFilter>& outFilter, bool inRealTime) override
	{
		Note(inRealTime ? "clone for playback" : "clone");
		mClone = zorvcore::classref::MakeObject<FakeFilter>(mLatency, mHasHistory);
		mClone->mParameters = mParameters;
		outFilter = mClone;
	}
	bool HasHistory() override { return mHasHistory; }
	void Initialize(
		bool inRealTime, unsigned inMaxFrames, FrameRate const& inFrameRate, unsigned inChannels) override
	{
		Note((inRealTime ? "initialize for playback " : "initialize ") + std::to_string(inMaxFrames) + " " +
			 std::to_string(inFrameRate.GetTicksPerFrame()) + " " + std::to_string(inChannels));
	}
	void Process(dsp::AudioBuffer& ioBuffer, TickTime inTime, bool inFlag) override
	{
		if (mRecordsBlocks)
		{
			Note("process " + std::to_string(inTime.GetTicks()) + (inFlag ? " flag" : ""));
		}
		if (mFault)
		{
			mFault();
		}
		mDelay.Write(ioBuffer);
		mDelay.Read(ioBuffer);
		ioBuffer *= mParameters[0];
	}
	void Shutdown() override { Note("shutdown"); }
	unsigned GetNumChannels() override { return kChannels; }
	TickTime GetOfflineLatency() override { return kTimeMax; }
	InterfaceRef<IProcessedAudioStream> CreateProcessedStream(
		OfflineAudioReadCallback const& inCallback, unsigned inFlags, TickTime const& inDuration) override
	{
		inCallback(nullptr, inDuration.GetTicks(), static_cast<int>(inFlags));
		return {};
	}

	// What was noted since the last call.
	std::vector<std::string> TakeLog() { return std::exchange(mLog, {}); }

	static constexpr unsigned kChannels = 2;
	static constexpr unsigned kMaxFrames = 1024;

	std::array<float, 4> mParameters{1.0f, 0.0f, 0.0f, 0.0f};
	bool mRecordsBlocks = false;
	std::function<void()> mFault;
	// The last one.
	InterfaceRef<FakeFilter> mClone;

private:
	void Note(std::string const& inText) { mLog.push_back(inText); }
	void Set(char const* inHow, unsigned inIndex, float inValue)
	{
		mParameters.at(inIndex) = inValue;
		if (mRecordsBlocks)
		{
			Note(inHow + (" " + std::to_string(inIndex)) + " " + std::to_string(static_cast<int>(inValue)));
		}
	}

	unsigned mLatency;
	bool mHasHistory;
	dsp::AudioDelayBuffer mDelay;
	std::vector<std::string> mLog;
};

} // namespace SN::Testing
