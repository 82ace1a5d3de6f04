// Pulling stereo blocks through a track of clips, beside the bare copies of what must move: once out of
// the source and, for each stage that changes the audio, once through the block.

#include "Sonaro/AudioTrackRenderableItems.h"
#include "Sonaro/GraphFactory.h"
#include "Sonaro/IAudioMeterSetter.h"
#include "Support/FakeParameter.h"
#include "Support/SimpleGenerator.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/threads/AtomicIntegral.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace
{

using namespace SN;
using namespace SN::Testing;

constexpr unsigned kFrames = 512;
constexpr long long kClipFrames = 48000;

// A stereo block that lies in memory, repeated.
class Source final : public SimpleGenerator
{
public:
	Source()
		: SimpleGenerator(2)
	{
	}

	void GetAudioData(TickTime const&, dsp::AudioBuffer& inBuffer, bool) override
	{
		inBuffer.CopyFrom(mBlock, inBuffer.GetUseSize());
	}

private:
	dsp::AudioBuffer mBlock{2, kFrames};
};

// The largest magnitude of all blocks.
class PeakMeter final : public Implements<PeakMeter, IAudioMeterSetter>
{
public:
	void Init(FrameRate const&, unsigned) override {}
	void SetMeterData(dsp::AudioBuffer const& inBuffer, TickTime const&) override
	{
		for (unsigned channel = 0; channel < 2; ++channel)
		{
			mPeak = std::max(mPeak,
				zorvaccelerate::utility::FindPeak(inBuffer.GetUseSize(), inBuffer.GetChannel(channel)));
		}
	}
	void Shutdown() override {}
	void Reset() override {}

private:
	float mPeak = 0.0f;
};

struct Track
{
	explicit Track(long long inClips, bool inHasStages)
	{
		AudioTrackRenderableItemList items;
		for (long long clip = 0; clip < inClips; ++clip)
		{
			InterfaceRef<IAudioTrackRenderableItem> const item =
				mFactory.CreateRealtimeAudioClipTrackItemRenderer({
					.mContext = mContext,
					.mFrameRate = k48000Hz,
					.mSource = zorvcore::classref::MakeObject<Source>(),
				});
			TickTime const start(clip * kClipFrames, k48000Hz);
			item->Init(start, TickTime((clip + 1) * kClipFrames, k48000Hz), start, k48000Hz);
			items.push_back(item);
		}
		mEnd = inClips * kClipFrames;
		std::vector<InterfaceRef<IAudioProcessor>> processors;
		InterfaceRef<IAudioPanProcessor> panner;
		if (inHasStages)
		{
			processors = {
				mFactory.CreateAudioFaderRenderer(mContext, k48000Hz,
					{zorvcore::classref::MakeObject<FakeParameter>(0.7f),
						zorvcore::classref::MakeObject<FakeParameter>(0.0f)}),
				mFactory.CreateAudioMeterRenderer(
					mContext, k48000Hz, zorvcore::classref::MakeObject<PeakMeter>()),
			};
			panner = mFactory.CreateAudioPanProcessorRenderer({
				.mContext = mContext,
				.mFrameRate = k48000Hz,
				.mParams = {zorvcore::classref::MakeObject<FakeParameter>(0.3f)},
			});
		}
		mTrack = mFactory.CreateAudioClipTrackRenderer({
			.mContext = mContext,
			.mFrameRate = k48000Hz,
			.mItems = items,
			.mProcessors = processors,
			.mPanProcessor = panner,
			.mChannels = VX::kAudioChannelLayout_Stereo,
		});
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

	GraphFactory<> mFactory;
	Prefetcher mPrefetcher;
	InterfaceRef<IAudioRenderContext> mContext = mFactory.CreateAudioRenderContext({
		.mMaxBlockSize = kFrames,
		.mPrefetchEnabled = true,
		.mControlInterval = kFrames,
		.mPrefetcher = &mPrefetcher,
	});
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
