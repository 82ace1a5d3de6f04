#include "MemoryMedia.h"

#include "Sonaro/IAsyncAudioSource.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "Support/Answers.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace SonaroHost::Sequence::Testing
{

namespace
{

SN::AudioChannelLayout GetLayoutOf(std::size_t inChannels)
{
	constexpr std::size_t kSurroundChannels = 6;
	return inChannels == kSurroundChannels ? zorvmediatypes::Create51ChannelLayout()
										   : MakeLayoutOfChannels(static_cast<unsigned>(inChannels));
}

class MemorySource final : public SN::Testing::Answers<SN::IAudioSource, SN::IAsyncAudioSource>
{
public:
	MemorySource(std::shared_ptr<MemoryMedia::Samples const> inSamples, SN::FrameRate const& inFrameRate,
		std::shared_ptr<PrefetchLedger> inLedger)
		: mSamples(std::move(inSamples)),
		  mFrameRate(inFrameRate),
		  mLedger(std::move(inLedger)),
		  mBatches(mLedger ? GetFrames() : 0)
	{
	}

	SN::FrameRate GetFrameRate() override { return mFrameRate; }
	SN::TickTime GetLength() override { return {static_cast<long long>(GetFrames()), mFrameRate}; }
	unsigned GetNumChannels() override { return static_cast<unsigned>(mSamples->size()); }
	SN::AudioChannelLayout GetAudioChannelLayout() override { return GetLayoutOf(mSamples->size()); }
	SN::ImmutableString GetName() override { return SN::ImmutableString("memory"); }
	void ReadAudio(
		VX::BinaryData const&, dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime, bool) override
	{
		Fill(inTime, inBuffer);
	}

	void PrefetchAudioData(unsigned long long const&, SN::TickTime const& inTime, unsigned inCount) override
	{
		long long const first = inTime.ToFrame64(mFrameRate);
		for (long long frame = std::max(first, 0ll); mLedger && frame < first + inCount; ++frame)
		{
			if (frame < static_cast<long long>(mBatches.size()))
			{
				mBatches[static_cast<std::size_t>(frame)] = mLedger->mBatch;
			}
		}
	}
	int ReadPrefetchedAudio(SN::TickTime const& inTime, dsp::AudioBuffer& inBuffer) override
	{
		Fill(inTime, inBuffer);
		if (mLedger && mLedger->mIsStrict)
		{
			DropEvicted(inTime.ToFrame64(mFrameRate), inBuffer);
		}
		return SN::kSuccess;
	}
	int GetPrefetchState() override { return SN::kSuccess; }

private:
	std::size_t GetFrames() const { return mSamples->front().size(); }
	void Fill(SN::TickTime const& inTime, dsp::AudioBuffer& outBuffer) const
	{
		long long const first = inTime.ToFrame64(mFrameRate);
		auto const end = static_cast<long long>(GetFrames());
		for (unsigned channel = 0; channel < outBuffer.GetNumChannels(); ++channel)
		{
			if (channel >= mSamples->size())
			{
				outBuffer.MarkChannelSilent(channel);
				continue;
			}
			for (unsigned i = 0; i < outBuffer.GetUseSize(); ++i)
			{
				long long const frame = first + i;
				bool const isInside = frame >= 0 && frame < end;
				outBuffer.GetChannel(channel)[i] =
					isInside ? (*mSamples)[channel][static_cast<std::size_t>(frame)] : 0.0f;
			}
			outBuffer.NoteChannelWrite(channel, outBuffer.GetUseSize());
		}
	}

	void DropEvicted(long long inFirst, dsp::AudioBuffer& ioBuffer) const
	{
		for (unsigned i = 0; i < ioBuffer.GetUseSize(); ++i)
		{
			long long const frame = inFirst + i;
			bool const isInside = frame >= 0 && frame < static_cast<long long>(mBatches.size());
			if (isInside && mBatches[static_cast<std::size_t>(frame)] != mLedger->mBatch)
			{
				for (std::size_t channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
				{
					ioBuffer.GetChannel(channel)[i] = 0.0f;
				}
			}
		}
	}

	std::shared_ptr<MemoryMedia::Samples const> mSamples;
	SN::FrameRate mFrameRate;
	std::shared_ptr<PrefetchLedger> mLedger;
	// In which each frame was read ahead last.
	std::vector<unsigned> mBatches;
};

class LatentProcessor final : public SN::Testing::Answers<SN::IAudioProcessor>
{
public:
	LatentProcessor(LatentEffect const& inEffect, SN::FrameRate const& inFrameRate, std::size_t inChannels,
		unsigned inMaxBlockSize)
		: mEffect(inEffect),
		  mFrameRate(inFrameRate),
		  mMaxBlockSize(inMaxBlockSize),
		  mLines(inChannels, std::vector<float>(static_cast<std::size_t>(inEffect.mDelayFrames)))
	{
	}

	SN::InterfaceRef<SN::IAudioProcessor> Clone(
		SN::FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned) override
	{
		return zorvcore::classref::MakeObject<LatentProcessor>(
			mEffect, inFrameRate, mLines.size(), inMaxBlockSize);
	}
	bool HasHistory() override { return mEffect.mDelayFrames > 0; }
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, SN::TickTime const&) override
	{
		unsigned const frames = inBuffer.GetUseSize();
		bool const isMisused =
			!mIsRunning || frames > mMaxBlockSize || inBuffer.GetNumChannels() != mLines.size();
		float const gain = isMisused ? std::numeric_limits<float>::quiet_NaN() : mEffect.mGain;
		for (std::size_t channel = 0; channel < mLines.size(); ++channel)
		{
			float* const samples = inBuffer.GetChannel(channel);
			bool const isSilent = inBuffer.IsChannelSilent(channel);
			for (unsigned i = 0; samples && i < frames; ++i)
			{
				samples[i] = Delay(mLines[channel], i, isSilent ? 0.0f : samples[i]) * gain;
			}
		}
		inBuffer.NoteBufferWrite(0, frames);
		mPosition += frames;
	}
	void Preroll(SN::TickTime const&, bool) override {}
	void Reset() override
	{
		for (std::vector<float>& line : mLines)
		{
			line.assign(line.size(), 0.0f);
		}
	}
	void InitializeAudioFilter() override { mIsRunning = true; }
	void ShutdownAudioFilter() override { mIsRunning = false; }
	SN::TickTime GetDelay() override { return {mEffect.mDelayFrames, mFrameRate}; }

private:
	float Delay(std::vector<float>& ioLine, unsigned inOffset, float inSample) const
	{
		return ioLine.empty() ? inSample
							  : std::exchange(ioLine[(mPosition + inOffset) % ioLine.size()], inSample);
	}

	LatentEffect mEffect;
	SN::FrameRate mFrameRate;
	unsigned mMaxBlockSize;
	bool mIsRunning = false;
	std::size_t mPosition = 0;
	std::vector<std::vector<float>> mLines;
};

} // namespace

MemoryMedia::MemoryMedia(
	double inSampleRate, Samples inSamples, std::shared_ptr<PrefetchLedger> const& inLedger)
	: mSamples(std::make_shared<Samples const>(std::move(inSamples)))
{
	mName = "memory";
	mSampleRate = inSampleRate;
	mFrames = static_cast<std::int64_t>(mSamples->front().size());
	mLayout = GetLayoutOf(mSamples->size());
	mOpen = [samples = mSamples, inLedger](SN::FrameRate const& inCountingRate)
	{
		return SN::InterfaceRef<SN::IAudioSource>(
			zorvcore::classref::MakeObject<MemorySource>(samples, inCountingRate, inLedger));
	};
}

SN::InterfaceRef<SN::IAudioProcessor> LatentEffect::operator()(
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
	SN::AudioChannelLayout const& inLayout) const
{
	return zorvcore::classref::MakeObject<LatentProcessor>(
		*this, inFrameRate, inLayout.size(), inContext->GetMaxBlockSize());
}

} // namespace SonaroHost::Sequence::Testing
