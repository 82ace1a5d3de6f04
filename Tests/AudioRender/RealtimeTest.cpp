#include "AudioRender/Source/AudioGeneratorSource.h"
#include "AudioRender/Track/CompensatingDelayOwnerMixin.h"
#include "Sonaro/IAudioTransition.h"
#include "Sonaro/IOffsetablePreview.h"
#include "Support/Engine.h"
#include "Support/FakeFilter.h"
#include "Support/RealtimeGuard.h"

#include <cstdlib>

namespace SN::RealtimeTest
{

// What faults work with, and what is left of them to be released.
struct Faults
{
	~Faults()
	{
		delete mMade;
		std::free(mAligned);
		std::free(mRelease);
	}

	std::mutex mMutex;
	void* mRelease = std::malloc(16);
	void* mAligned = nullptr;
	int* mMade = nullptr;
	dsp::AudioBuffer mLibrary;
};

// Faults planted in a render call: the guard must see each one.
TEST(RealtimeGuard, SeesWhatIsPlantedInARenderCall)
{
	struct Case
	{
		char const* mName;
		void (*mFault)(Faults&);
		bool mAllocates;
		bool mLocks;
	};
	Case const cases[] = {
		{"nothing", [](Faults&) {}, false, false},
		{"operator new", [](Faults& io) { io.mMade = new int(1); }, true, false},
		{"posix_memalign", [](Faults& io) { EXPECT_EQ(posix_memalign(&io.mAligned, 64, 64), 0); }, true,
			false},
		{"free", [](Faults& io) { std::free(std::exchange(io.mRelease, nullptr)); }, true, false},
		{"an allocation inside a shared library", [](Faults& io) { io.mLibrary.Init(2, 1000); }, true, false},
		{"a mutex", [](Faults& io) { std::lock_guard const lock(io.mMutex); }, false, true},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context;
		Faults faults;
		auto const source = MakeObject<FakeSource>(1, 1000, SourceKind{},
			[&](unsigned long long, long long inFrame)
			{
				inFrame == 3 ? test.mFault(faults) : void();
				return 0.5f;
			});
		source->mRecordsCalls = false;
		auto const stream = MakeStream(context, source);
		dsp::AudioBuffer buffer(1, 16);
		RealtimeGuard const guard;
		stream->GetAudioData(kTimeZero, buffer, false);
		EXPECT_EQ(guard.GetAllocations() > 0, test.mAllocates);
		EXPECT_EQ(guard.GetLocks() > 0, test.mLocks);
	}
}

void ExpectNothingSeen(RealtimeGuard const& inGuard)
{
	EXPECT_EQ(inGuard.GetAllocations(), 0);
	EXPECT_EQ(inGuard.GetLocks(), 0);
}

// Two values, one after the other.
InterfaceRef<FakeParameter> MovingAt(long long inFrame)
{
	auto const parameter = MakeObject<FakeParameter>(
		[inFrame](TickTime const& inTime) { return inTime < At(inFrame) ? 0.25f : 0.75f; });
	parameter->mNext = kTimeZero;
	return parameter;
}

// Pulls blocks before, across and after the source's ends, in both directions.
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
			TickTime const time = At(frame);
			ioGenerator.AccumulatePrefetchRequests({time, time + kTimeMax}, SynchronousPrefetch, accumulator);
			ioGenerator.GetAudioData(time, buffer, reverse);
			ioGenerator.GetDelay();
			ioGenerator.HasHistory();
		}
	}
	ioGenerator.Reset();
	ExpectNothingSeen(guard);
}

TEST(RenderPath, StreamsAndClipsNeitherAllocateNorLock)
{
	Prefetcher prefetcher;
	for (bool const prefetch : {false, true})
	{
		for (int const channelIndex : {-1, 1})
		{
			for (unsigned const clipChannels : {1u, 2u, 6u})
			{
				SCOPED_TRACE(Message() << (prefetch ? "prefetch, " : "") << "channel " << channelIndex
									   << " into " << clipChannels);
				ScopedContext const context(256, prefetch ? &prefetcher : nullptr);
				auto const source = MakeObject<FakeSource>(2, 1000, SourceKind{true, true});
				source->mRecordsCalls = false;
				auto const stream = MakeStream(context, source, channelIndex);
				InterfaceRef<IOffsetablePreview>(stream)->AddPreviewOffset(At(-30));
				auto const clip = MakeClip(context, {{stream, {{0, 0}, {1, 1}, {5, 0}}}},
					{.mChannels = clipChannels, .mStartOffset = At(40), .mGain = 0.5f});
				ExpectQuiet(*stream, 2);
				ExpectQuiet(*clip, clipChannels);
				ExpectQuiet(*clip->Clone(), clipChannels);
			}
		}
	}
	ExpectQuiet(*MakeSilence(VX::kAudioChannelLayout_Stereo), 2);
}

// Blocks on both sides of the media's start.
TEST(RenderPath, MediaAndAnglesNeitherAllocateNorLock)
{
	ScopedContext const context;
	context->SetImmediateRender(true);
	auto const generator = MakeObject<FakeGenerator>(2u);
	generator->mRecordsCalls = false;
	GraphFactory const factory;
	ExpectQuiet(
		*factory.CreateAudioContentRenderer({context, k48000Hz, k44100Hz, generator, true, At(-300)}), 2);
	ExpectQuiet(
		*factory.CreateAudioContentMulticamRenderer({context, k48000Hz, k44100Hz, {generator, generator},
			std::make_shared<zorvcore::threads::AtomicIntegral<int, 0>>(1), true, At(-300)}),
		2);
}

// Chunks that are there and others that are not, and both ends.
TEST(RenderPath, ReadingWhatWasPrefetchedNeitherAllocatesNorLocks)
{
	auto const source = AudioGeneratorSource::Create(MakeObject<FakeGenerator>(2), 64, At(640));
	source->PrefetchAudioData(0, At(64), 200);
	dsp::AudioBuffer buffer(2, 256);
	RealtimeGuard const guard;
	for (long long const frame : {-5, 0, 100, 500, 1000})
	{
		source->ReadPrefetchedAudio(At(frame), buffer);
	}
	ExpectNothingSeen(guard);
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
		Parameters made;
		std::generate_n(std::back_inserter(made), inCount, [] { return MovingAt(300); });
		return made;
	};
	for (unsigned type = 0; type <= kPanNoneMonoAlias; ++type)
	{
		bool const hasOneControl = type == kPanStereoToStereo || type == kPanMonoToStereo;
		InterfaceRef<IAudioPanProcessor> panner;
		factory->CreateAudioPanProcessorRenderer(context, k48000Hz, static_cast<PanProcessorType>(type),
			false, params(hasOneControl ? 1 : 4), &panner);
		InterfaceRef<IAudioPanProcessor> direct;
		factory->CreateDirectAudioPanProcessorRenderer(context, k48000Hz, static_cast<PanProcessorType>(type),
			8, {{0, {0, 1, 4, 5}}}, false, params(4), &direct);
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
	auto const matrix = MakeMatrix(context, {{0, {1}}, {1, {0, 2}}});

	for (auto const& panner : panners)
	{
		SCOPED_TRACE(Message() << panner->GetInputChannelType() << " to " << panner->GetOutputChannelType());
		InterfaceRef<IParameterOwnerMixin> const owner(panner);
		dsp::AudioBuffer input(panner->GetNumInputChannels(), 256);
		dsp::AudioBuffer output(panner->GetNumOutputChannels(), 256);
		panner->Preroll(kTimeZero, false);
		RealtimeGuard const guard;
		for (long long const frame : {0, 256, 1000, 1200, 1201})
		{
			TickTime const time = At(frame);
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
		ExpectNothingSeen(guard);
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

	TickTime GetDelay() override { return At(300); }
	void GetAudioData(TickTime const&, dsp::AudioBuffer& inBuffer, bool) override
	{
		std::fill_n(inBuffer.GetChannel(0), inBuffer.GetUseSize(), 0.25f);
		inBuffer.NoteChannelWrite(0, inBuffer.GetUseSize());
	}
};

// Clips at several speeds with an effect that is bypassed at times, a fader, a send with a delay and a moving pan, played, filled ahead, cached,
// muted and thrown about, in both directions.
TEST(RenderPath, TracksNeitherAllocateNorLock)
{
	Prefetcher prefetcher;
	ScopedContext const context(256, &prefetcher);
	AudioTrackRenderableItemList items;
	for (long long start = 0; start < 3000; start += 500)
	{
		InterfaceRef<IAudioTrackRenderableItem> const item(
			MakeItem(context, MakeObject<QuietGenerator>(), {.mSpeed = start % 1000 == 0 ? 1.0 : 1.25}));
		item->Init(At(start), At(start + 500), At(start), k48000Hz);
		items.push_back(item);
	}
	auto const off = MakeObject<FakeParameter>(0.0f);
	auto const fader = MakeFader(context, {MovingAt(700), off});
	auto const send = MakeSend(
		context, MovingAt(700), {MovingAt(700), off}, MakePanner(context, kPanMonoToStereo, {MovingAt(700)}));
	auto const effect = GraphFactory().CreateAudioFilterRenderer({
		.mContext = context.Get(),
		.mFrameRate = k48000Hz,
		.mFilter = MakeObject<FakeFilter>(100u),
		.mParams = {MakeObject<FakeParameter>(
						[](TickTime const& inTime) { return inTime < At(612) ? 0.0f : 1.0f; }),
			MovingAt(700)},
		.mChannelLayout = VX::kAudioChannelLayout_Mono,
	});
	auto const mute = std::make_shared<Mute>(0);
	auto const track = MakeClipTrack(context, items,
		{.mProcessors = {effect, fader, send, effect->Clone(k48000Hz, 256, 16)},
			.mPanner = MakePanner(context, kPanMonoToStereo, {MovingAt(700)}),
			.mOwner = MovingAt(700),
			.mMute = mute,
			.mLayout = VX::kAudioChannelLayout_Stereo});
	InterfaceRef<CompensatingDelayOwnerMixin>(track)->SetDelays({{0, 0, 100}, {0, 0, 40}});
	InterfaceRef<ICachedAudioGenerator> const cached(track);
	dsp::AudioBuffer buffer(2, 256);
	for (bool const reverse : {false, true})
	{
		prefetcher.mReverse = reverse ? 1 : 0;
		track->Reset();
		track->Preroll(At(100), reverse);
		RealtimeGuard const guard;
		for (long long const frame : {100, 356, 612, 2000, 50, 2900, 5000})
		{
			TickTime const time = At(frame);
			mute->Set(frame == 2000 ? 1 : 0);
			track->GetAudioData(time, buffer, reverse);
			cached->GenerateAudio(200, time, reverse);
			cached->MixCachedAudio(buffer);
			track->GetDelay();
		}
		ExpectNothingSeen(guard);
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
	Prefetcher prefetcher{kTimeZero, At(3000), 1, 0};
	ScopedContext const context(256, &prefetcher);
	TickTime const start = At(100);
	Generator const source(MakeObject<QuietGenerator>());
	Generator transition;
	SonaroFactory::CreateClassRef()->CreateAudioTransitionRenderer(context, k48000Hz, MakeObject<Halves>(),
		{}, source, source, kTimeZero, kTimeZero, start, start, &transition);
	auto const parameter = MakeObject<FakeParameter>(0.25f);
	auto const off = MakeObject<FakeParameter>(0.0f);
	auto const fader = MakeFader(context, {parameter, off});
	auto const panner = MakePanner(context, kPanMonoToStereo, {parameter});
	auto const send = MakeSend(context, {}, {parameter, off}, panner->Clone(k48000Hz, 16));
	auto const join = MakeJoin(context, source, source, fader, 1.0, 2.0);
	auto const mix =
		[&](std::vector<InterfaceRef<UnknownBase>> const& inInputs, Processors const& inProcessors)
	{
		return MakeMixTrack(
			context, MakeInlet(context, inInputs), {.mProcessors = inProcessors, .mPanner = panner});
	};
	auto const first = mix({transition, join}, {});
	auto const second = mix({join}, {});
	auto const third = mix({first, second, source}, {fader, send});
	auto const group = MakeGroup(context, {first, second, third, mix({first, third, send}, {})},
		{{{0, 0, 9}}, {}, {{0, 0, 7}, {0, 0, 9}}}, {start, start});
	dsp::AudioBuffer buffer(2, 256);
	for (auto const& one : {group, group->Clone()})
	{
		one->Preroll(kTimeZero, false);
		RealtimeGuard const guard;
		for (long long const frame : {0, 256, 2900, 600})
		{
			parameter->mNext = frame == 256 ? kTimeZero : kTimeMax;
			one->GetAudioData(At(frame), buffer, frame == 600);
			one->GetDelay();
			one->HasHistory();
		}
		EXPECT_FALSE(buffer.IsSilent());
		ExpectNothingSeen(guard);
	}
}

} // namespace SN::RealtimeTest
