// Pulling stereo blocks through a track of clips, beside the bare copies of what must move: once out of
// the source and, for each stage that changes the audio, once through the block.

#include "Sonaro/AudioTrackRenderableItems.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/IRenderableAudioComponentParam.h"
#include "Sonaro/PanProcessorType.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "Sonaro/SonaroFactory.h"
#include "Vexilon/ITimeTransform.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/threads/AtomicIntegral.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <vector>

namespace
{

using namespace SN;

constexpr FrameRate k48000Hz{5292000};
constexpr unsigned kFrames = 512;
constexpr long long kClipFrames = 48000;

// A stereo block that lies in memory, repeated.
class Source final : public IAudioGenerator, public IAudioGeneratorPrivate
{
public:
	InterfaceRef<IAudioGenerator> Clone() override { return {}; }
	bool HasHistory() override { return false; }
	TickTime GetDelay() override { return kTimeZero; }
	void Preroll(TickTime const&, bool) override {}
	void FillInitialDelay(TickTime const&, TickTime const&, bool, bool) override {}
	void AccumulatePrefetchRequests(PrefetchRange const&, PrefetchType, PrefetchRequestAccumulator&) override
	{
	}
	void GetAudioData(TickTime const&, dsp::AudioBuffer& inBuffer, bool) override
	{
		inBuffer.CopyFrom(mBlock, inBuffer.GetUseSize());
	}
	void Reset() override {}
	void InitializeAudioFilters() override {}
	void ShutdownAudioFilters() override {}
	unsigned GetNumChannels() override { return 2; }
	unsigned GetNumOutputChannels() override { return 2; }
	AudioChannelLayout GetAudioChannelLayout() override { return VX::kAudioChannelLayout_Stereo; }
	FrameRate GetGeneratorFrameRate() override { return k48000Hz; }

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		void* const found =
			zorvcore::classref::QueryInterfaces<IAudioGenerator, IAudioGeneratorPrivate>(this, inIdentifier);
		return found ? found : Unknown::QueryMap(inIdentifier);
	}

private:
	dsp::AudioBuffer mBlock{2, kFrames};
};

class SameTime final : public VX::ITimeTransform
{
public:
	TickTime GetTime(TickTime const& inTime) override { return inTime; }

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		void* const found = zorvcore::classref::QueryInterfaces<VX::ITimeTransform>(this, inIdentifier);
		return found ? found : Unknown::QueryMap(inIdentifier);
	}
};

class Control final : public IRenderableAudioComponentParam
{
public:
	explicit Control(float inValue)
		: mValue(inValue)
	{
	}

	InterfaceRef<IRenderableAudioComponentParam> CloneAndDetach(bool) override
	{
		return zorvcore::classref::MakeObject<Control>(mValue);
	}
	void Init(unsigned, FrameRate const&, bool) override {}
	void UpdateControl(TickTime const&, VX::KeyframeCacheBase*, VX::KeyframeBase* outKeyframe) override
	{
		if (outKeyframe->GetTypeCode() == VX::kParamTypeFloat)
		{
			static_cast<VX::Keyframe<float>*>(outKeyframe)->mValue = mValue;
		}
	}
	TickTime GetNextInterestingTime(TickTime const&, VX::KeyframeCacheBase*) override { return kTimeMax; }
	bool HasActionPending() override { return false; }
	void ReplaceControl(boost::shared_ptr<VX::ParamValueBase>, bool) override {}
	void Preroll(TickTime const&) override {}
	void Reset() override {}
	bool IsEmpty() override { return true; }
	boost::shared_ptr<VX::ParamValueBase> GetStartValue() override { return {}; }

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		void* const found =
			zorvcore::classref::QueryInterfaces<IRenderableAudioComponentParam>(this, inIdentifier);
		return found ? found : Unknown::QueryMap(inIdentifier);
	}

private:
	float mValue;
};

// The largest magnitude of all blocks, in vectors.
class PeakMeter final : public IAudioMeterSetter
{
public:
	void Init(FrameRate const&, unsigned) override {}
	void SetMeterData(dsp::AudioBuffer const& inBuffer, TickTime const&) override
	{
		for (unsigned channel = 0; channel < 2; ++channel)
		{
			float const* const samples = inBuffer.GetChannel(channel);
			for (unsigned i = 0; i + kLanes <= inBuffer.GetUseSize(); i += kLanes)
			{
				Lanes lanes;
				std::memcpy(&lanes, samples + i, sizeof(lanes));
				Lanes const magnitudes = lanes < 0.0f ? -lanes : lanes;
				mPeaks = magnitudes > mPeaks ? magnitudes : mPeaks;
			}
		}
	}
	void Shutdown() override {}
	void Reset() override {}

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		void* const found = zorvcore::classref::QueryInterfaces<IAudioMeterSetter>(this, inIdentifier);
		return found ? found : Unknown::QueryMap(inIdentifier);
	}

private:
	static constexpr unsigned kLanes = 4;
	using Lanes = float __attribute__((vector_size(kLanes * sizeof(float))));

	Lanes mPeaks{};
};

struct Track
{
	explicit Track(long long inClips, bool inHasStages)
	{
		mFactory->CreateAudioRenderContext(kFrames, true, false, kTimeZero, kTimeMax, kFrames, kTimeZero,
			&mPrefetcher, ImmutableString("benchmark"), false, false, false, false, RenderQuality::kHigh,
			&mContext);
		AudioTrackRenderableItemList items;
		auto const transform = zorvcore::classref::MakeObject<SameTime>();
		for (long long clip = 0; clip < inClips; ++clip)
		{
			InterfaceRef<IAudioPanProcessor> none;
			mFactory->CreateNoneAudioPanProcessorRenderer(mContext, VX::kAudioChannelLayout_Stereo, &none);
			InterfaceRef<IAudioGenerator> generator;
			mFactory->CreateRealtimeAudioClipTrackItemRenderer(mContext, k48000Hz,
				zorvcore::classref::MakeObject<Source>(), {}, none, 1.0, transform, kTimeZero, &generator);
			InterfaceRef<IAudioTrackRenderableItem> const item(generator);
			TickTime const start(clip * kClipFrames, k48000Hz);
			item->Init(start, TickTime((clip + 1) * kClipFrames, k48000Hz), start, k48000Hz);
			items.push_back(item);
		}
		mEnd = inClips * kClipFrames;
		std::vector<InterfaceRef<IAudioProcessor>> processors;
		InterfaceRef<IAudioPanProcessor> panner;
		if (inHasStages)
		{
			processors.resize(2);
			mFactory->CreateAudioFaderRenderer(mContext, k48000Hz,
				{zorvcore::classref::MakeObject<Control>(0.7f),
					zorvcore::classref::MakeObject<Control>(0.0f)},
				&processors[0]);
			mFactory->CreateAudioMeterRenderer(
				mContext, k48000Hz, zorvcore::classref::MakeObject<PeakMeter>(), &processors[1]);
			mFactory->CreateAudioPanProcessorRenderer(mContext, k48000Hz, kPanStereoToStereo, false,
				{zorvcore::classref::MakeObject<Control>(0.3f)}, &panner);
		}
		mFactory->CreateAudioClipTrackRenderer(
			mContext, k48000Hz, items, {}, {}, processors, panner, VX::kAudioChannelLayout_Stereo, &mTrack);
		mTrack->Preroll(kTimeZero, false);
	}
	~Track() { mContext->Clear(); }
	Track(Track const&) = delete;
	Track& operator=(Track const&) = delete;

	void Pull(benchmark::State& ioState) const
	{
		dsp::AudioBuffer buffer(2, kFrames);
		long long frame = 0;
		for (auto _ : ioState)
		{
			mTrack->GetAudioData(TickTime(frame, k48000Hz), buffer, false);
			benchmark::ClobberMemory();
			frame = frame + 2 * kFrames <= mEnd ? frame + kFrames : 0;
		}
	}

	InterfaceRef<SonaroFactory> mFactory = SonaroFactory::CreateClassRef();
	Prefetcher mPrefetcher;
	InterfaceRef<IAudioRenderContext> mContext;
	InterfaceRef<IAudioGenerator> mTrack;
	long long mEnd = 0;
};

// A track of so many clips, every clip a second long, without processors.
void BM_TrackOfClips(benchmark::State& ioState)
{
	Track const track(ioState.range(0), false);
	track.Pull(ioState);
}

// One clip with fader, meter and stereo pan.
void BM_TrackWithStages(benchmark::State& ioState)
{
	Track const track(3, true);
	track.Pull(ioState);
}

// The stereo copies that BM_TrackWithStages cannot do without: source, fader, meter and pan.
void BM_BareTrackCopies(benchmark::State& ioState)
{
	dsp::AudioBuffer buffers(2, 5 * kFrames);
	for (auto _ : ioState)
	{
		for (unsigned stage = 0; stage < 4; ++stage)
		{
			for (unsigned channel = 0; channel < 2; ++channel)
			{
				float* const from = buffers.GetChannel(channel) + stage * kFrames;
				zorvaccelerate::utility::Copy(kFrames, from, from + kFrames);
			}
		}
		benchmark::ClobberMemory();
	}
}

BENCHMARK(BM_TrackOfClips)->Arg(10)->Arg(10000);
BENCHMARK(BM_BareTrackCopies);
BENCHMARK(BM_TrackWithStages);

} // namespace
