#include "AudioRender/Component/AudioFaderRenderer.h"
#include "AudioRender/Component/AudioSendRenderer.h"
#include "AudioRender/Track/CompensatingDelayOwnerMixin.h"
#include "Sonaro/IAudioMeterSetter.h"
#include "Support/Engine.h"

namespace SN::FaderSendDelayTest
{

// One block of ones through a processor whose controls are sampled before.
std::vector<float> Process(IAudioProcessor& ioProcessor, long long inFrame, unsigned inFrames)
{
	InterfaceRef<IParameterOwnerMixin>(InterfaceRef<Unknown>::FromThis(&ioProcessor))
		->UpdateControls(At(inFrame));
	dsp::AudioBuffer buffer = MakeBuffer(1, inFrames, 1.0f);
	ioProcessor.ProcessAudioData(buffer, At(inFrame));
	return Heard(buffer);
}

struct Fader
{
	explicit Fader(float inGain, Prefetcher& ioPrefetcher)
		: mContext(512, &ioPrefetcher),
		  mGain(MakeObject<FakeParameter>(inGain)),
		  mMute(MakeObject<FakeParameter>(0.0f)),
		  mFader(MakeFader(mContext.Get(), {mGain, mMute}))
	{
	}

	ScopedContext mContext;
	InterfaceRef<FakeParameter> mGain;
	InterfaceRef<FakeParameter> mMute;
	InterfaceRef<IAudioProcessor> mFader;
};

TEST(AudioFaderRenderer, RampsOnlyWherePlaybackGoesOn)
{
	Prefetcher prefetcher;
	Fader fader(0.5f, prefetcher);
	EXPECT_EQ(Process(*fader.mFader, 0, 100), std::vector<float>(100, 0.5f)) << "the start is a jump";
	fader.mMute->mValueAt = [](TickTime const&) { return 1.0f; };
	auto const fading = Process(*fader.mFader, 100, 400);
	EXPECT_EQ(fading[0], 0.5f);
	EXPECT_NEAR(static_cast<double>(fading[120]), 0.25, 1e-6) << "5 ms";
	EXPECT_EQ(fading[240], 0.0f);
	fader.mMute->mValueAt = [](TickTime const&) { return 0.0f; };
	EXPECT_EQ(Process(*fader.mFader, 9000, 10)[0], 0.5f) << "a jump";
	fader.mGain->mValueAt = [](TickTime const&) { return 1.0f; };
	EXPECT_EQ(Process(*fader.mFader->Clone(k48000Hz, 512, 16), 9010, 10)[0], 1.0f) << "a clone has no past";
	prefetcher.mReverse = 1;
	auto const backwards = Process(*fader.mFader, 50, 400);
	EXPECT_NEAR(static_cast<double>(backwards[120]), 0.75, 1e-6) << "backwards everything ramps";
	fader.mContext->SetDelayCompensationDisabled(true);
	fader.mGain->mValueAt = [](TickTime const&) { return 0.25f; };
	EXPECT_EQ(Process(*fader.mFader, 450, 10)[0], 0.25f) << "in steps";
}

TEST(AudioFaderRenderer, IsMutedWhenNothingWillEverPass)
{
	for (bool const isOn : {false, true})
	{
		for (TickTime const& next : {kTimeMax, At(10)})
		{
			Prefetcher prefetcher;
			Fader fader(1.0f, prefetcher);
			fader.mMute->mValueAt = [isOn](TickTime const&) { return isOn ? 1.0f : 0.0f; };
			fader.mMute->mNext = next;
			EXPECT_EQ(InterfaceRef<AudioFaderRenderer>(fader.mFader)->IsMuted(), isOn && next == kTimeMax);
		}
	}
	ScopedContext const context;
	InterfaceRef<IAudioProcessor> fader;
	auto const factory = SonaroFactory::CreateClassRef();
	EXPECT_EQ(factory->CreateAudioFaderRenderer({}, k48000Hz, {}, &fader), eNullPointer);
	EXPECT_EQ(factory->CreateAudioFaderRenderer(context, FrameRate(), {}, &fader), eInvalidArgument);
	EXPECT_EQ(factory->CreateAudioFaderRenderer(context, k48000Hz, {}, &fader), kSuccess);
	EXPECT_FALSE(InterfaceRef<AudioFaderRenderer>(fader)->IsMuted());
	EXPECT_EQ(Process(*fader, 0, 4), std::vector<float>(4, 0.0f)) << "a missing gain is 0";
}

class CountingMeter final : public Answers<IAudioMeterSetter>
{
public:
	void Init(FrameRate const&, unsigned) override {}
	void SetMeterData(dsp::AudioBuffer const& inBuffer, TickTime const&) override
	{
		mHeard += inBuffer.GetUseSize();
	}
	void Shutdown() override {}
	void Reset() override { ++mResets; }

	unsigned mHeard = 0;
	unsigned mResets = 0;
};

TEST(AudioMeterRenderer, OnlyAPlaybackAtTheTopIsMetered)
{
	Prefetcher prefetcher;
	for (bool const isPlayback : {false, true})
	{
		for (bool const isNested : {false, true})
		{
			ScopedContext const context(256, isPlayback ? &prefetcher : nullptr);
			auto const meter = MakeObject<CountingMeter>();
			context.Nest(isNested ? 1 : 0);
			InterfaceRef<IAudioProcessor> renderer;
			SonaroFactory::CreateClassRef()->CreateAudioMeterRenderer(context, k48000Hz, meter, &renderer);
			if (isNested)
			{
				context->PopNestingLevel();
			}
			dsp::AudioBuffer buffer(1, 10);
			buffer.GetChannel(0)[3] = 0.5f;
			for (auto const& one : {renderer, renderer->Clone(k48000Hz, 256, 16)})
			{
				one->ProcessAudioData(buffer, At(0));
				one->Reset();
			}
			unsigned const expected = isPlayback && !isNested ? 1 : 0;
			EXPECT_EQ(meter->mHeard, 20 * expected);
			EXPECT_EQ(meter->mResets, 2 * expected);
			EXPECT_EQ(buffer.GetChannel(0)[3], 0.5f);
		}
	}
}

struct Send
{
	explicit Send(PanProcessorType inPan, float inGain, bool inIsOff = false)
		: mTarget(MakeObject<FakeParameter>(0.0f))
	{
		auto const params = ConstantParameters(std::vector<float>(inPan == kPanMonoToStereo ? 1 : 0, 1.0f));
		mSend = MakeSend(mContext.Get(), mTarget, ConstantParameters({inGain, inIsOff ? 1.0f : 0.0f}),
			MakePanner(mContext.Get(), inPan, params));
		mSend->Preroll(kTimeZero, false);
	}

	// Numbers from inFrame on go through; they must come out as they went in.
	void Push(long long inFrame, unsigned inFrames)
	{
		dsp::AudioBuffer buffer(1, inFrames);
		FillFrom(&PositionSample, 1, At(inFrame), k48000Hz, buffer);
		mSend->ProcessAudioData(buffer, At(inFrame));
		dsp::AudioBuffer pushed(1, inFrames);
		FillFrom(&PositionSample, 1, At(inFrame), k48000Hz, pushed);
		ASSERT_EQ(Heard(buffer), Heard(pushed));
	}
	// What the destination gets on top of ones.
	std::vector<float> PickUp(unsigned inChannel, unsigned inFrames)
	{
		dsp::AudioBuffer mix(2, inFrames);
		std::fill_n(mix.GetChannel(inChannel), inFrames, 1.0f);
		mContext->FindCachedGenerator(mTarget)->MixCachedAudio(mix);
		return {mix.GetChannel(inChannel), mix.GetChannel(inChannel) + inFrames};
	}

	ScopedContext mContext{256};
	InterfaceRef<UnknownBase> mTarget;
	InterfaceRef<IAudioProcessor> mSend;
};

TEST(AudioSendRenderer, CollectsUntilTheDestinationPicksUp)
{
	Send plain(kPanNoneMono, 0.5f);
	for (long long block = 0; block < 2; ++block)
	{
		plain.Push(1000 * block, 100);
		plain.Push(1000 * block + 100, 100);
		auto const got = plain.PickUp(0, 200);
		for (unsigned i = 0; i < 200; ++i)
		{
			ASSERT_EQ(got[i], 1.0f + 0.5f * PositionSample(0, 1000 * block + i)) << i;
		}
	}
	// What has no room is dropped, and what came before it stays.
	plain.Push(0, 200);
	plain.Push(200, 200);
	plain.Push(400, 10);
	auto const full = plain.PickUp(0, 256);
	EXPECT_EQ(full[255], 1.0f + 0.5f * PositionSample(0, 255));

	Send panned(kPanMonoToStereo, 0.5f);
	panned.Push(0, 200);
	panned.Push(200, 200);
	EXPECT_EQ(panned.PickUp(1, 256)[255], 1.0f + 0.5f * PositionSample(0, 255))
		<< "the gain comes after the pan";
	EXPECT_NEAR(panned.PickUp(0, 256)[255], 1.0f, 0.1f) << "a millionth of the other side's level";

	// Silence takes its room, and picking it up gives the room back.
	Send quiet(kPanNoneMono, 0.5f);
	dsp::AudioBuffer silence(1, 200);
	silence.Zero();
	quiet.mSend->ProcessAudioData(silence, At(0));
	EXPECT_EQ(quiet.PickUp(0, 200), std::vector<float>(200, 1.0f));
	quiet.Push(0, 200);
	EXPECT_EQ(quiet.PickUp(0, 200)[199], 1.0f + 0.5f * PositionSample(0, 199));

	Send off(kPanNoneMono, 0.5f, true);
	off.Push(0, 100);
	EXPECT_EQ(off.PickUp(0, 100), std::vector<float>(100, 1.0f));
	auto const clone = plain.mSend->Clone(k48000Hz, 128, 16);
	EXPECT_TRUE(InterfaceRef<ICachedAudioGenerator>(clone).IsValid());
}

TEST(CompensatingDelayLine, RefusesEndlessDelays)
{
	for (unsigned const delay : {(1u << 31) - 1023, 1u << 31, ~0u})
	{
		CompensatingDelayLine line;
		line.Init(1024, 0);
		EXPECT_THROW(line.SetDelay(delay), std::length_error) << delay;
		EXPECT_FALSE(line.IsActive());
	}
}

TEST(CompensatingDelayLine, AWindowWiderThanItsParentLosesNothing)
{
	CompensatingDelayLine line;
	line.Init(8, 2);
	line.SetDelay(4);
	line.SetInPlace();
	for (float const expected : {0.0f, 1.0f})
	{
		dsp::AudioBuffer parent = MakeBuffer(1, 8, 1.0f);
		line.Process(*WindowOf(parent, 0, 8, 2));
		EXPECT_EQ(parent.GetChannel(0)[3], expected);
		EXPECT_EQ(parent.GetChannel(0)[4], 1.0f);
	}
}

TEST(CompensatingDelayOwnerMixin, EverySampleComesOutOneDelayLaterInAnyBlocks)
{
	std::mt19937 random(61);
	for (unsigned const delay : {0u, 1u, 37u, 63u, 64u, 65u, 500u})
	{
		auto const owner = MakeObject<CompensatingDelayOwnerMixin>();
		owner->Init(2, 64, 2);
		owner->SetDelays({{0, 0, delay}, {0, 0, delay}});
		for (unsigned const index : {0u, 1u})
		{
			SCOPED_TRACE("delay " + std::to_string(delay) + (index == 1 ? ", in place" : ", a copy"));
			CompensatingDelayLine& line = owner->GetLine(index);
			auto const isSilent = [](unsigned inChannel, long long inFrame)
			{ return inFrame < 0 || (inChannel == 1 && inFrame >= 200 && inFrame < 400); };
			for (long long frame = 0; frame < 1500;)
			{
				// Blocks do not cross where the second channel falls silent.
				long long const edge = frame < 200 ? 200 : frame < 400 ? 400 : 1500;
				auto const count =
					static_cast<unsigned>(std::min<long long>(1 + random() % 64, edge - frame));
				dsp::AudioBuffer buffer(2, count);
				FillFrom(&PositionSample, 2, At(frame), k48000Hz, buffer);
				buffer.SetChannelZero(1, isSilent(1, frame));
				dsp::AudioBuffer& out = line.Process(buffer);
				EXPECT_EQ(&out == &buffer, index == 1 || delay == 0);
				for (unsigned channel = 0; channel < 2; ++channel)
				{
					auto const heard = Heard(out, channel);
					for (unsigned i = 0; i < count; ++i)
					{
						long long const from = frame + i - delay;
						ASSERT_EQ(heard[i], isSilent(channel, from) ? 0.0f : PositionSample(channel, from))
							<< "channel " << channel << ", frame " << frame + i;
					}
				}
				frame += count;
			}
		}
		auto const copy = MakeObject<CompensatingDelayOwnerMixin>();
		copy->CopyDimensions(*owner);
		EXPECT_FALSE(copy->GetLastLine().IsActive());
		EXPECT_EQ(copy->GetLine(0).GetMaxSamples(), 64u);
	}
}

} // namespace SN::FaderSendDelayTest
