#include "AudioRender/Source/AudioGeneratorSource.h"
#include "AudioRender/Track/CompensatingDelayOwnerMixin.h"
#include "Sonaro/DelayDependency.h"
#include "Sonaro/IAudioTrackRenderableItem.h"
#include "Sonaro/IAudioTransition.h"
#include "Sonaro/ICachedAudioGenerator.h"
#include "Sonaro/IOffsetablePreview.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/PanProcessorType.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "Sonaro/SonaroFactory.h"
#include "Support/Answers.h"
#include "Support/Contexts.h"
#include "Support/FakeParameter.h"
#include "Support/Fakes.h"
#include "Support/RealtimeGuard.h"
#include "Support/SimpleGenerator.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>

namespace SN
{
namespace
{

using namespace Testing;
using zorvcore::classref::MakeObject;

// Faults planted in a render call: the guard must see each one.
enum class Fault
{
	kNone,
	kNew,
	kAlignedAllocation,
	kRelease,
	kAllocationInALibrary,
	kLock,
};

TEST(RealtimeGuard, SeesWhatIsPlantedInARenderCall)
{
	struct Case
	{
		char const* mName;
		Fault mFault;
		bool mAllocates;
		bool mLocks;
	};
	Case const cases[] = {
		{"nothing", Fault::kNone, false, false},
		{"operator new", Fault::kNew, true, false},
		{"posix_memalign", Fault::kAlignedAllocation, true, false},
		{"free", Fault::kRelease, true, false},
		{"an allocation inside a shared library", Fault::kAllocationInALibrary, true, false},
		{"a mutex", Fault::kLock, false, true},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context;
		std::mutex mutex;
		void* release = std::malloc(16);
		void* aligned = nullptr;
		int* made = nullptr;
		dsp::AudioBuffer library;
		auto const source = MakeObject<FakeSource>(1, 1000, SourceKind{},
			[&](unsigned long long, long long inFrame)
			{
				switch (inFrame == 3 ? test.mFault : Fault::kNone)
				{
				case Fault::kNone:
					break;
				case Fault::kNew:
					made = new int(1);
					break;
				case Fault::kAlignedAllocation:
					EXPECT_EQ(posix_memalign(&aligned, 64, 64), 0);
					break;
				case Fault::kRelease:
					std::free(release);
					release = nullptr;
					break;
				case Fault::kAllocationInALibrary:
					library.Init(2, 1000);
					break;
				case Fault::kLock:
					mutex.lock();
					mutex.unlock();
					break;
				}
				return 0.5f;
			});
		source->mRecordsCalls = false;
		InterfaceRef<IAudioGenerator> stream;
		SonaroFactory::CreateClassRef()->CreateAudioStreamRenderer(
			context.Get(), k48000Hz, source, -1, 1.0, {}, &stream);
		dsp::AudioBuffer buffer(1, 16);
		{
			RealtimeGuard const guard;
			stream->GetAudioData(kTimeZero, buffer, false);
			EXPECT_EQ(guard.GetAllocations() > 0, test.mAllocates);
			EXPECT_EQ(guard.GetLocks() > 0, test.mLocks);
		}
		delete made;
		std::free(aligned);
		std::free(release);
	}
}

// Runs inPull over blocks before, across and behind the source's ends, in both directions.
void ExpectQuiet(IAudioGenerator& ioGenerator, unsigned inChannels)
{
	dsp::AudioBuffer buffer(inChannels, 256);
	std::vector<SynchronousPrefetchRequest> requests;
	requests.reserve(64);
	RealtimeGuard const guard;
	PrefetchRequestAccumulator accumulator(PrefetchRequestAccumulator::FixedCapacity, &requests, nullptr);
	for (long long const frame : {-1000, -256, -100, 0, 17, 900, 1000, 5000})
	{
		for (bool const reverse : {false, true})
		{
			TickTime const time(frame, k48000Hz);
			ioGenerator.AccumulatePrefetchRequests({time, time + kTimeMax}, SynchronousPrefetch, accumulator);
			ioGenerator.GetAudioData(time, buffer, reverse);
			ioGenerator.GetDelay();
			ioGenerator.HasHistory();
		}
	}
	ioGenerator.Reset();
	EXPECT_EQ(guard.GetAllocations(), 0);
	EXPECT_EQ(guard.GetLocks(), 0);
}

TEST(RenderPath, StreamsAndClipsNeitherAllocateNorLock)
{
	auto const factory = SonaroFactory::CreateClassRef();
	Prefetcher prefetcher;
	for (bool const prefetch : {false, true})
	{
		for (int const channelIndex : {-1, 1})
		{
			for (unsigned const clipChannels : {1u, 2u, 6u})
			{
				SCOPED_TRACE(testing::Message() << (prefetch ? "prefetch, " : "") << "channel "
												<< channelIndex << " into " << clipChannels);
				ScopedContext const context(256, prefetch ? &prefetcher : nullptr);
				auto const source = MakeObject<FakeSource>(2, 1000, SourceKind{true, true});
				source->mRecordsCalls = false;
				InterfaceRef<IAudioGenerator> stream;
				factory->CreateAudioStreamRenderer(
					context.Get(), k48000Hz, source, channelIndex, 1.0, {}, &stream);
				InterfaceRef<IOffsetablePreview>(stream)->AddPreviewOffset(TickTime(-30, k48000Hz));
				InterfaceRef<IAudioGenerator> clip;
				factory->CreateAudioClipRenderer(context.Get(), k48000Hz,
					{{stream, {{0, 0}, {1, 1}, {5, 0}}}},
					VX::CreateAudioChannelLayout(
						VX::kAudioChannelTypeAdaptive, static_cast<int>(clipChannels)),
					TickTime(40, k48000Hz), 0.5f, 1.0, &clip);
				ExpectQuiet(*stream, 2);
				ExpectQuiet(*clip, clipChannels);
				ExpectQuiet(*clip->Clone(), clipChannels);
			}
		}
	}
	InterfaceRef<IAudioGenerator> silence;
	factory->CreateSilentRenderer(VX::kAudioChannelLayout_Stereo, &silence);
	ExpectQuiet(*silence, 2);
}

// Chunks that are there and others that are not, and both ends.
TEST(RenderPath, ReadingWhatWasPrefetchedNeitherAllocatesNorLocks)
{
	auto const source =
		AudioGeneratorSource::Create(MakeObject<FakeGenerator>(2), 64, TickTime(640, k48000Hz));
	source->PrefetchAudioData(0, TickTime(64, k48000Hz), 200);
	dsp::AudioBuffer buffer(2, 256);
	RealtimeGuard const guard;
	for (long long const frame : {-5, 0, 100, 500, 1000})
	{
		source->ReadPrefetchedAudio(TickTime(frame, k48000Hz), buffer);
	}
	EXPECT_EQ(guard.GetAllocations(), 0);
	EXPECT_EQ(guard.GetLocks(), 0);
}

// Every pan processor and the channel matrix, with moving controls, over sound, silence, jumps and blocks of
// changing length.
TEST(RenderPath, PannersAndRoutersNeitherAllocateNorLock)
{
	auto const factory = SonaroFactory::CreateClassRef();
	ScopedContext const context;
	std::vector<InterfaceRef<IAudioPanProcessor>> panners;
	auto const params = [](unsigned inCount)
	{
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> made;
		for (unsigned i = 0; i < inCount; ++i)
		{
			made.push_back(MakeObject<FakeParameter>(
				[](TickTime const& inTime) { return inTime < TickTime(300, k48000Hz) ? 0.25f : 0.75f; }));
		}
		return made;
	};
	for (unsigned type = 0; type <= kPanNoneMonoAlias; ++type)
	{
		bool const hasOneControl = type == kPanStereoToStereo || type == kPanMonoToStereo;
		InterfaceRef<IAudioPanProcessor> panner;
		factory->CreateAudioPanProcessorRenderer(context.Get(), k48000Hz, static_cast<PanProcessorType>(type),
			false, params(hasOneControl ? 1 : 4), &panner);
		InterfaceRef<IAudioPanProcessor> direct;
		factory->CreateDirectAudioPanProcessorRenderer(context.Get(), k48000Hz,
			static_cast<PanProcessorType>(type), 8, {{0, {0, 1, 4, 5}}}, false, params(4), &direct);
		for (auto const& made : {panner, direct})
		{
			if (made)
			{
				panners.push_back(made);
			}
		}
	}
	panners.emplace_back();
	factory->CreateChannelMixerAudioPanProcessorRenderer(
		VX::kAudioChannelLayout_Mono, VX::kAudioChannelLayout_Stereo, {{0.5f, 0.25f}}, &panners.back());
	ASSERT_EQ(panners.size(), 16u + 4u + 1u);
	InterfaceRef<IAudioProcessor> matrix;
	factory->CreateAudioChannelMatrixRenderer(context.Get(), k48000Hz, {{0, {1}}, {1, {0, 2}}}, &matrix);

	for (auto const& panner : panners)
	{
		SCOPED_TRACE(
			testing::Message() << panner->GetInputChannelType() << " to " << panner->GetOutputChannelType());
		InterfaceRef<IParameterOwnerMixin> const owner(panner);
		dsp::AudioBuffer input(panner->GetNumInputChannels(), 256);
		dsp::AudioBuffer output(panner->GetNumOutputChannels(), 256);
		panner->Preroll(kTimeZero, false);
		RealtimeGuard const guard;
		for (long long const frame : {0, 256, 1000, 1200, 1201})
		{
			TickTime const time(frame, k48000Hz);
			input.SetSilenceFlags(dsp::SilenceFlags(frame == 1200 ? ~0ull : 0b10));
			input.SetUseSize(frame == 1201 ? 37 : 256);
			output.SetUseSize(input.GetUseSize());
			if (owner)
			{
				owner->GetNextInterestingTime(time);
				owner->UpdateControls(time);
			}
			panner->ProcessAudioData(input, output, time);
			input.ClearSilenceFlags(dsp::SilenceFlags::All());
			matrix->ProcessAudioData(input, time);
		}
		panner->Reset();
		EXPECT_EQ(guard.GetAllocations(), 0);
		EXPECT_EQ(guard.GetLocks(), 0);
	}
}

// A latent generator of one value.
class QuietGenerator final : public SimpleGenerator
{
public:
	QuietGenerator()
		: SimpleGenerator(1)
	{
	}

	TickTime GetDelay() override { return TickTime(300, k48000Hz); }
	void GetAudioData(TickTime const&, dsp::AudioBuffer& inBuffer, bool) override
	{
		std::fill_n(inBuffer.GetChannel(0), inBuffer.GetUseSize(), 0.25f);
		inBuffer.NoteChannelWrite(0, inBuffer.GetUseSize());
	}
};

// Clips at several speeds with a fader, a send with a delay and a moving pan, played, filled ahead, cached,
// muted and thrown about, in both directions.
TEST(RenderPath, TracksNeitherAllocateNorLock)
{
	auto const factory = SonaroFactory::CreateClassRef();
	Prefetcher prefetcher;
	ScopedContext const context(256, &prefetcher);
	auto const moving = []
	{
		auto const parameter = MakeObject<FakeParameter>(
			[](TickTime const& inTime) { return inTime < TickTime(700, k48000Hz) ? 0.25f : 0.75f; });
		parameter->mNext = kTimeZero;
		return parameter;
	};
	AudioTrackRenderableItemList items;
	for (long long start = 0; start < 3000; start += 500)
	{
		InterfaceRef<IAudioPanProcessor> none;
		factory->CreateNoneAudioPanProcessorRenderer(context.Get(), VX::kAudioChannelLayout_Mono, &none);
		InterfaceRef<IAudioGenerator> clip;
		factory->CreateRealtimeAudioClipTrackItemRenderer(context.Get(), k48000Hz,
			MakeObject<QuietGenerator>(), {}, none, start % 1000 == 0 ? 1.0 : 1.25,
			MakeObject<ShiftTransform>(), kTimeZero, &clip);
		InterfaceRef<IAudioTrackRenderableItem> const item(clip);
		item->Init(
			TickTime(start, k48000Hz), TickTime(start + 500, k48000Hz), TickTime(start, k48000Hz), k48000Hz);
		items.push_back(item);
	}
	std::vector<InterfaceRef<IAudioProcessor>> processors(2);
	factory->CreateAudioFaderRenderer(
		context.Get(), k48000Hz, {moving(), MakeObject<FakeParameter>(0.0f)}, &processors[0]);
	InterfaceRef<IAudioPanProcessor> sendPanner;
	factory->CreateAudioPanProcessorRenderer(
		context.Get(), k48000Hz, kPanMonoToStereo, false, {moving()}, &sendPanner);
	factory->CreateAudioSendRenderer(context.Get(), k48000Hz, moving(),
		{moving(), MakeObject<FakeParameter>(0.0f)}, sendPanner, &processors[1]);
	InterfaceRef<IAudioPanProcessor> panner;
	factory->CreateAudioPanProcessorRenderer(
		context.Get(), k48000Hz, kPanMonoToStereo, false, {moving()}, &panner);
	auto const mute = std::make_shared<zorvcore::threads::AtomicIntegral<int>>(0);
	InterfaceRef<IAudioGenerator> track;
	ASSERT_EQ(factory->CreateAudioClipTrackRenderer(context.Get(), k48000Hz, items, moving(), mute,
				  processors, panner, VX::kAudioChannelLayout_Stereo, &track),
		kSuccess);
	InterfaceRef<CompensatingDelayOwnerMixin>(track)->SetDelays({{0, 0, 100}, {0, 0, 40}});
	InterfaceRef<ICachedAudioGenerator> const cached(track);
	dsp::AudioBuffer buffer(2, 256);
	for (bool const reverse : {false, true})
	{
		prefetcher.mReverse = reverse ? 1 : 0;
		track->Reset();
		track->Preroll(TickTime(100, k48000Hz), reverse);
		RealtimeGuard const guard;
		for (long long const frame : {100, 356, 612, 2000, 50, 2900, 5000})
		{
			TickTime const time(frame, k48000Hz);
			mute->Set(frame == 2000 ? 1 : 0);
			track->GetAudioData(time, buffer, reverse);
			cached->GenerateAudio(200, time, reverse);
			cached->MixCachedAudio(buffer);
			track->GetDelay();
		}
		EXPECT_EQ(guard.GetAllocations(), 0);
		EXPECT_EQ(guard.GetLocks(), 0);
	}
}

// What halves the way between two clips.
class Halves final : public Answers<IAudioTransition>
{
public:
	void GetGainValue(
		AudioTransitionParameters const&, float, float& outOutgoingGain, float& outIncomingGain) override
	{
		outOutgoingGain = outIncomingGain = 0.5f;
	}
};

// A looping sequence of a transition, of two generators joined, and of a submix of both with a send, a fader
// and a pan, in the original and in a clone.
TEST(RenderPath, SequencesNeitherAllocateNorLock)
{
	auto const factory = SonaroFactory::CreateClassRef();
	Prefetcher prefetcher{kTimeZero, TickTime(3000, k48000Hz), 1, 0};
	ScopedContext const context(256, &prefetcher);
	TickTime const start(100, k48000Hz);
	std::vector<InterfaceRef<IAudioGenerator>> items(2);
	InterfaceRef<IAudioGenerator> const source(MakeObject<QuietGenerator>());
	factory->CreateAudioTransitionRenderer(context.Get(), k48000Hz, MakeObject<Halves>(), {}, source, source,
		kTimeZero, kTimeZero, start, start, &items[0]);
	std::vector<InterfaceRef<IAudioProcessor>> processors(2);
	InterfaceRef<IAudioPanProcessor> panner;
	auto const parameter = MakeObject<FakeParameter>(0.25f);
	auto const off = MakeObject<FakeParameter>(0.0f);
	factory->CreateAudioFaderRenderer(context.Get(), k48000Hz, {parameter, off}, &processors[0]);
	factory->CreateAudioPanProcessorRenderer(
		context.Get(), k48000Hz, kPanMonoToStereo, false, {parameter}, &panner);
	factory->CreateAudioSendRenderer(
		context.Get(), k48000Hz, {}, {parameter, off}, panner->Clone(k48000Hz, 16), &processors[1]);
	factory->CreateAudioMixRenderer(
		context.Get(), k48000Hz, source, 1.0, source, 2.0, processors[0], &items[1]);
	std::vector<InterfaceRef<IAudioGenerator>> tracks(4);
	auto const addMix = [&](std::vector<InterfaceRef<UnknownBase>> const& inInputs, std::size_t inTrack)
	{
		InterfaceRef<IAudioGenerator> inlet;
		factory->CreateAudioTrackInletRenderer(
			context.Get(), k48000Hz, inInputs, VX::kAudioChannelLayout_Mono, &inlet);
		factory->CreateAudioMixTrackRenderer(context.Get(), k48000Hz, inlet, {}, {},
			inTrack == 2 ? processors : std::vector<InterfaceRef<IAudioProcessor>>(), panner,
			VX::kAudioChannelLayout_Mono, &tracks[inTrack]);
	};
	addMix({items[0], items[1]}, 0);
	addMix({items[1]}, 1);
	addMix({tracks[0], tracks[1], source}, 2);
	addMix({tracks[0], tracks[2], processors[1]}, 3);
	InterfaceRef<IAudioGenerator> group;
	ASSERT_EQ(factory->CreateAudioTrackGroupRenderer(context.Get(), k48000Hz, tracks,
				  {{{0, 0, 9}}, {}, {{0, 0, 7}, {0, 0, 9}}}, {start, start}, VX::kAudioChannelLayout_Stereo,
				  {}, &group),
		kSuccess);
	dsp::AudioBuffer buffer(2, 256);
	for (auto const& one : {group, group->Clone()})
	{
		one->Preroll(kTimeZero, false);
		RealtimeGuard const guard;
		for (long long const frame : {0, 256, 2900, 600})
		{
			parameter->mNext = frame == 256 ? kTimeZero : kTimeMax;
			one->GetAudioData(TickTime(frame, k48000Hz), buffer, frame == 600);
			one->GetDelay();
			one->HasHistory();
		}
		EXPECT_FALSE(buffer.IsSilent());
		EXPECT_EQ(guard.GetAllocations(), 0);
		EXPECT_EQ(guard.GetLocks(), 0);
	}
}

} // namespace
} // namespace SN
