#include "AudioRender/Routing/AudioTransitionRenderer.h"

#include "Support/Engine.h"

namespace SN::AudioTransitionRendererTest
{

// Gains that show a wrong progress, in whichever place of the float.
class CrossFade final : public Answers<IAudioTransition>
{
public:
	void GetGainValue(AudioTransitionParameters const& inParameters, float inProgress, float& outOutgoingGain,
		float& outIncomingGain) override
	{
		++mCalls;
		mParameters = inParameters;
		outOutgoingGain = 1.0f - inProgress * inProgress;
		outIncomingGain = inProgress;
	}

	unsigned mCalls = 0;
	AudioTransitionParameters mParameters;
};

// A clip of which channels are flagged.
class FlaggedClip final : public SimpleGenerator
{
public:
	FlaggedClip(unsigned inChannels, unsigned long long inSilent, float inScale)
		: SimpleGenerator(inChannels),
		  mSilent(inSilent),
		  mScale(inScale)
	{
	}

	float SampleAt(unsigned long long inChannel, long long inFrame)
	{
		bool const isSilent = inChannel >= GetNumChannels() || (mSilent >> inChannel & 1) != 0;
		return isSilent ? 0.0f : mScale * PositionSample(inChannel, inFrame);
	}
	void GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) override
	{
		FillFrom([this](unsigned long long inChannel, long long inFrame)
			{ return SampleAt(inChannel, inFrame); },
			GetNumChannels(), inTime, k48000Hz, inBuffer, inReverse);
		for (unsigned channel = 0; channel < GetNumChannels(); ++channel)
		{
			inBuffer.SetChannelZero(channel, (mSilent >> channel & 1) != 0);
		}
	}

private:
	unsigned long long mSilent;
	float mScale;
};

constexpr AudioTransitionParameters kParameters{3, 5, 7};

// The transition begins at frame 1000 and lasts 77; the clips' own times begin at 400 and 950.
InterfaceRef<IAudioGenerator> Make(ScopedContext const& inContext,
	InterfaceRef<IAudioTransition> const& inTransition, InterfaceRef<IAudioGenerator> const& inOutgoing,
	InterfaceRef<IAudioGenerator> const& inIncoming)
{
	InterfaceRef<IAudioGenerator> renderer;
	EXPECT_EQ(
		SonaroFactory::CreateClassRef()->CreateAudioTransitionRenderer(inContext, k48000Hz, inTransition,
			kParameters, inOutgoing, inIncoming, At(400), At(950), At(1000), At(77), &renderer),
		kSuccess);
	return renderer;
}

// One block, as the formula has it.
Samples Reference(FlaggedClip& ioOutgoing, FlaggedClip& ioIncoming, long long inFirst, unsigned inFrames)
{
	Samples result(3, std::vector<float>(inFrames));
	for (unsigned channel = 0; channel < 3; ++channel)
	{
		auto progress = static_cast<float>(At(inFirst) / At(77));
		auto const step = static_cast<float>(At(1) / At(77));
		for (unsigned i = 0; i < inFrames; ++i)
		{
			float const outgoing =
				(1.0f - progress * progress) * ioOutgoing.SampleAt(channel, inFirst + 600 + i);
			float const incoming = progress * ioIncoming.SampleAt(channel, inFirst + 50 + i);
			result[channel][i] = outgoing + incoming;
			progress += step;
		}
	}
	return result;
}

TEST(AudioTransitionRenderer, MixesBitForBitAsTheFormulaWhateverIsSilent)
{
	std::mt19937 random(91);
	for (unsigned long long flags = 0; flags < 16; ++flags)
	{
		SCOPED_TRACE(flags);
		ScopedContext const context(64);
		auto const outgoing = MakeObject<FlaggedClip>(2, flags & 3, 1.0f);
		auto const incoming = MakeObject<FlaggedClip>(3, flags >> 2, 0.1f);
		auto const transition = MakeObject<CrossFade>();
		auto const renderer = Make(context, transition, outgoing, incoming);
		EXPECT_EQ(InterfaceRef<IAudioGeneratorPrivate>(renderer)->GetNumChannels(), 3u);
		for (InterfaceRef<IAudioGenerator> const& one : {renderer, renderer->Clone()})
		{
			long long const first = random() % 40;
			unsigned const frames = 1 + static_cast<unsigned>(random()) % 37;
			PullRange const range{first, frames, 3, k48000Hz};
			Samples const expected = Reference(*outgoing, *incoming, first, frames);
			transition->mCalls = 0;
			EXPECT_TRUE(Same(PullWhole(*one, range), expected));
			// The third channel comes in alone and is never flagged.
			unsigned const heard = 1 + ((flags & 5) != 5 ? 1 : 0) + ((flags & 10) != 10 ? 1 : 0);
			EXPECT_EQ(transition->mCalls, heard * frames);
			EXPECT_EQ(transition->mParameters, kParameters);
			EXPECT_TRUE(Same(PullWhole(*one, range, Direction::kReverse), Reversed(expected)));
		}
	}
}

TEST(AudioTransitionRenderer, ClipsHearTheirOwnTimesAndSilenceAsksNobody)
{
	ScopedContext const context;
	auto const outgoing = MakeObject<FakeGenerator>(1);
	auto const incoming = MakeObject<FakeGenerator>(1);
	outgoing->mDelay = At(3);
	incoming->mDelay = At(5);
	auto const renderer = Make(context, MakeObject<CrossFade>(), outgoing, incoming);
	EXPECT_EQ(InterfaceRef<AudioTransitionRenderer>(renderer)->GetParameters(), kParameters);
	EXPECT_EQ(renderer->GetDelay(), At(5));
	renderer->Preroll(At(10), true);
	RequestPrefetch(*renderer, {At(10), At(20)});
	renderer->FillInitialDelay(At(10), kTimeZero, false, true);
	dsp::AudioBuffer buffer(1, 4);
	renderer->GetAudioData(At(10), buffer, false);
	auto const calls = [](long long inPreroll, long long inMapped)
	{
		return std::vector<Call>{{"Preroll", At(inPreroll), 0, true},
			{"Prefetch " + std::to_string(SynchronousPrefetch), At(inMapped), At(10).GetTicks(), false},
			{"FillInitialDelay, forced", At(10), 0, false}, {"GetAudioData", At(inMapped), 4, false}};
	};
	EXPECT_EQ(outgoing->mCalls, calls(10, 610)) << "the preroll of the clip that goes is not mapped";
	EXPECT_EQ(incoming->mCalls, calls(60, 60));

	// Not even for a missing transition.
	auto const silent = MakeObject<FlaggedClip>(1, 1, 1.0f);
	Make(context, {}, silent, silent)->GetAudioData(At(10), buffer, true);
	EXPECT_TRUE(buffer.IsSilent());
}

} // namespace SN::AudioTransitionRendererTest
