#include "Support/Fakes.h"

#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <ostream>

namespace SN::Testing
{

namespace
{

AudioChannelLayout LayoutOf(unsigned inChannels)
{
	switch (inChannels)
	{
	case 1:
		return zorvmediatypes::CreateMonoChannelLayout();
	case 2:
		return zorvmediatypes::CreateStereoChannelLayout();
	case 6:
		return zorvmediatypes::Create51ChannelLayout();
	default:
		return zorvmediatypes::CreateMultichannelLayout(static_cast<int>(inChannels));
	}
}

} // namespace

float PositionSample(unsigned long long inChannel, long long inFrame)
{
	// Seven channels of 2^21 positions fit the 24 bits of a float; further channels wrap.
	return static_cast<float>(static_cast<long long>(inChannel % 7) * 2097152 + inFrame + 1000001);
}

void FillFrom(SampleFunction const& inFunction, unsigned inChannels, TickTime const& inTime,
	FrameRate const& inFrameRate, dsp::AudioBuffer& outBuffer, bool inReverse)
{
	long long const first = inTime.ToFrame64(inFrameRate);
	for (unsigned long long channel = 0; channel < outBuffer.GetNumChannels(); ++channel)
	{
		if (channel >= inChannels)
		{
			outBuffer.MarkChannelSilent(channel);
			continue;
		}
		float* const samples = outBuffer.GetChannel(channel);
		for (unsigned sample = 0; sample < outBuffer.GetUseSize(); ++sample)
		{
			samples[sample] = inFunction(channel, first + sample);
		}
		outBuffer.NoteChannelWrite(channel, outBuffer.GetUseSize());
	}
	if (inReverse)
	{
		outBuffer.Reverse();
	}
}

std::ostream& operator<<(std::ostream& ioStream, Call const& inCall)
{
	return ioStream << inCall.mName << "(" << inCall.mTime.GetTicks() << ", " << inCall.mAmount
					<< (inCall.mReverse ? ", reverse)" : ")");
}

InterfaceRef<IAudioGenerator> FakeGenerator::Clone()
{
	Record({"Clone", {}, 0, false});
	auto const clone = zorvcore::classref::MakeObject<FakeGenerator>(mNumChannels, mFunction, mFrameRate);
	clone->mDelay = mDelay;
	clone->mHasHistory = mHasHistory;
	return clone;
}

void FakeGenerator::Preroll(TickTime const& inStartTime, bool inReverse)
{
	Record({"Preroll", inStartTime, 0, inReverse});
}

void FakeGenerator::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	Record({inForceCompletion ? "FillInitialDelay, forced" : "FillInitialDelay", inStartTime,
		inDelayTime.GetTicks(), inReverse});
}

void FakeGenerator::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator&)
{
	Record({"Prefetch " + std::to_string(inType), inRange.mStart, (inRange.mEnd - inRange.mStart).GetTicks(),
		false});
}

void FakeGenerator::GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse)
{
	Record({"GetAudioData", inTime, inBuffer.GetUseSize(), inReverse});
	mSeenChannels = inBuffer.GetNumChannels();
	FillFrom(mFunction, mNumChannels, inTime, mFrameRate, inBuffer, inReverse);
}

void FakeGenerator::Record(Call const& inCall) const
{
	if (mRecordsCalls)
	{
		mCalls.push_back(inCall);
	}
}

AudioChannelLayout FakeGenerator::GetAudioChannelLayout()
{
	return LayoutOf(mNumChannels);
}

void* FakeGenerator::QueryMap(GUID const& inIdentifier)
{
	void* const found =
		zorvcore::classref::QueryInterfaces<IAudioGenerator, IAudioGeneratorPrivate, FakeGenerator>(
			this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

InterfaceRef<IAudioProcessor> FakeProcessor::Clone(FrameRate const&, unsigned, unsigned)
{
	auto const clone = zorvcore::classref::MakeObject<FakeProcessor>(mGain);
	clone->mDelay = mDelay;
	return clone;
}

void FakeProcessor::ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime)
{
	mCalls.push_back({"ProcessAudioData", inTime, inBuffer.GetUseSize(), false});
	inBuffer *= mGain;
}

void FakeProcessor::Preroll(TickTime const& inTime, bool inReverse)
{
	mCalls.push_back({"Preroll", inTime, 0, inReverse});
}

FakeSource::FakeSource(unsigned inChannels, long long inFrames, SourceKind const& inKind,
	SampleFunction inFunction, FrameRate const& inFrameRate)
	: mDuration(inFrames, inFrameRate),
	  mNumChannels(inChannels),
	  mFrames(inFrames),
	  mKind(inKind),
	  mFunction(std::move(inFunction)),
	  mFrameRate(inFrameRate)
{
}

AudioChannelLayout FakeSource::GetAudioChannelLayout()
{
	return LayoutOf(mNumChannels);
}

void FakeSource::ReadAudio(VX::BinaryData const&, dsp::AudioBuffer& inBuffer, TickTime const& inTime, bool)
{
	Record("ReadAudio", inTime, inBuffer.GetUseSize());
	Fill(inTime, inBuffer);
}

void FakeSource::PrefetchAudioData(unsigned long long const&, TickTime const& inTime, unsigned inNumSamples)
{
	Record("PrefetchAudioData", inTime, inNumSamples);
}

int FakeSource::ReadPrefetchedAudio(TickTime const& inTime, dsp::AudioBuffer& inBuffer)
{
	Record("ReadPrefetchedAudio", inTime, inBuffer.GetUseSize());
	Fill(inTime, inBuffer);
	return kSuccess;
}

void* FakeSource::QueryMap(GUID const& inIdentifier)
{
	if ((inIdentifier == IAudioSourceFile::kIdentifier && !mKind.mIsFile) ||
		(inIdentifier == IAsyncAudioSource::kIdentifier && !mKind.mIsAsync))
	{
		return nullptr;
	}
	void* const found =
		zorvcore::classref::QueryInterfaces<IAudioSource, IAudioSourceFile, IAsyncAudioSource>(
			this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

void FakeSource::Record(char const* inName, TickTime const& inTime, long long inAmount)
{
	if (mRecordsCalls)
	{
		mCalls.push_back({inName, inTime, inAmount, false});
	}
}

void FakeSource::Fill(TickTime const& inTime, dsp::AudioBuffer& outBuffer)
{
	FillFrom([this](unsigned long long inChannel, long long inFrame)
		{ return inFrame < mFrames ? mFunction(inChannel, inFrame) : 0.0f; },
		mNumChannels, inTime, mFrameRate, outBuffer);
}

} // namespace SN::Testing
