#include "AudioRender/Component/AudioFilterRenderer.h"

#include "Sonaro/AudioFilterControl.h"
#include "Sonaro/AudioFilterException.h"
#include "Support/AssertCapture.h"
#include "Support/Engine.h"
#include "Support/FakeFilter.h"
#include "zorvcore/utility/RunGuarded.h"

#include <cstdio>

namespace SN::AudioFilterRendererTest
{

using zorvcore::config::NullPtrException;

// In stereo.
InterfaceRef<IAudioProcessor> Make(Context const& inContext, InterfaceRef<FakeFilter> const& inFilter,
	Parameters const& inParameters, InterfaceRef<FakeFilter> const& inSecond = {})
{
	return GraphFactory().CreateAudioFilterRenderer({
		.mContext = inContext,
		.mFrameRate = k48000Hz,
		.mFilter = inFilter,
		.mSecondFilter = inSecond,
		.mActionFlag = true,
		.mParams = inParameters,
		.mChannelLayout = VX::kAudioChannelLayout_Stereo,
	});
}

void UpdateControls(InterfaceRef<IAudioProcessor> const& inProcessor, long long inFrame)
{
	InterfaceRef<IParameterOwnerMixin>(inProcessor)->UpdateControls(At(inFrame));
}

TEST(AudioFilterRenderer, ParametersAreSetWhereNobodyElseSetsThem)
{
	struct Case
	{
		char const* mName;
		bool mIsPlayback;
		bool mIsNested;
		bool mHasHistory;
		bool mIsImmediate;
		bool mIsOnMainThread;
		std::vector<std::string> mAtPreroll;
		std::vector<std::string> mAtUpdate;
	};
	std::vector<std::string> const up = {"set 0 5", "set 1 6", "set 2 7"};
	std::vector<std::string> const down = {"set 2 7", "set 1 6", "set 0 5"};
	std::vector<std::string> const downFromMain = {"main 2 7", "main 1 6", "main 0 5"};
	auto const both = [&](std::vector<std::string> outCalls)
	{
		outCalls.insert(outCalls.begin(), up.begin(), up.end());
		return outCalls;
	};
	Case const cases[] = {
		{"export", false, false, false, false, true, both(down), up},
		{"export with history", false, false, true, false, true, down, {}},
		{"nested export", false, true, false, false, true, both(down), up},
		{"playback", true, false, false, false, true, down, {}},
		{"playback with history", true, false, true, false, true, down, {}},
		{"nested playback", true, true, false, false, true, both(down), up},
		{"immediate render", false, false, false, true, true, both(downFromMain), up},
		{"immediate render elsewhere", false, false, false, true, false, both(down), up},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		Prefetcher prefetcher;
		ScopedContext const context(256, test.mIsPlayback ? &prefetcher : nullptr);
		context.Nest(test.mIsNested ? 1 : 0);
		context->SetImmediateRender(test.mIsImmediate);
		auto const filter = MakeObject<FakeFilter>(0u, test.mHasHistory);
		auto const renderer = Make(context, filter, ConstantParameters({0.0f, 5.0f, 6.0f, 7.0f}));
		filter->mRecordsBlocks = true;
		auto const preroll = [&] { renderer->Preroll(At(10), false); };
		test.mIsOnMainThread ? preroll() : std::thread(preroll).join();
		EXPECT_EQ(filter->TakeLog(), test.mAtPreroll);
		UpdateControls(renderer, 20);
		EXPECT_EQ(filter->TakeLog(), test.mAtUpdate);
		EXPECT_EQ(renderer->HasHistory(), test.mHasHistory);
	}
}

// The source frame that is heard, or -1 for silence: the delay holds the audio of the last bypass, the effect that
// before it.
long long FindHeard(long long inFrame)
{
	long long const into = inFrame % 640;
	long long const stale = inFrame / 640 == 1 ? -1 : inFrame - 640 - 100;
	return into < 100 ? stale : inFrame - 100;
}

// In blocks of 64 samples, the largest, and in those of an item that is faster than 1.
TEST(AudioFilterRenderer, ABypassKeepsTheDelay)
{
	for (unsigned const size : {64u, 160u})
	{
		SCOPED_TRACE(size);
		ScopedContext const context(64);
		auto const bypass = MakeObject<FakeParameter>(
			[](TickTime const& inTime) { return inTime.ToFrame32(k48000Hz) / 640 % 2 == 1 ? 1.0f : 0.0f; });
		auto const filter = MakeObject<FakeFilter>(100u);
		auto const renderer = Make(context, filter, {bypass});
		EXPECT_EQ(renderer->GetDelay(), At(100));
		for (long long frame = 0; frame < 2560; frame += size)
		{
			dsp::AudioBuffer buffer(2, size);
			FillFrom(&PositionSample, 2, At(frame), k48000Hz, buffer);
			UpdateControls(renderer, frame);
			renderer->ProcessAudioData(buffer, At(frame));
			for (unsigned i = 0; i < 2 * size; ++i)
			{
				long long const from = FindHeard(frame + i / 2);
				float const wanted = from < 0 ? 0.0f : PositionSample(i % 2, from);
				ASSERT_EQ(Heard(buffer, i % 2)[i / 2], wanted) << frame + i / 2;
			}
		}
	}
}

TEST(AudioFilterRenderer, TheEffectGetsWhatTheContextSays)
{
	Prefetcher prefetcher;
	for (bool const isPlayback : {false, true})
	{
		ScopedContext const context(256, isPlayback ? &prefetcher : nullptr);
		auto const filter = MakeObject<FakeFilter>();
		auto const second = MakeObject<FakeFilter>();
		auto const renderer = Make(context, filter, {}, second);
		renderer->InitializeAudioFilter();
		std::string const initialize =
			isPlayback ? "initialize for playback 256 5292000 2" : "initialize 256 5292000 2";
		EXPECT_THAT(filter->TakeLog(), ElementsAre(initialize));
		EXPECT_THAT(second->TakeLog(), ElementsAre(initialize));
		filter->mRecordsBlocks = true;
		dsp::AudioBuffer buffer(2, 16);
		context->SetFilterRenderFlag(true);
		renderer->ProcessAudioData(buffer, TickTime(4, k48000Hz));
		renderer->Clone(k48000Hz, 256, 16);
		EXPECT_THAT(filter->TakeLog(),
			ElementsAre("process 21168000 flag", isPlayback ? "clone for playback" : "clone"));
	}
}

TEST(AudioFilterRenderer, AMachineExceptionNamesTheEffect)
{
	ScopedContext const context;
	auto const filter = MakeObject<FakeFilter>();
	auto const renderer = Make(context, filter, {});
	dsp::AudioBuffer buffer = MakeBuffer(2, 16, 0.5f);
	AssertCapture const capture;
	auto const fault = [] { *static_cast<int volatile*>(nullptr) = 1; };
	filter->mFault = fault;
	for (int time = 0; time < 2; ++time)
	{
		try
		{
			renderer->ProcessAudioData(buffer, kTimeZero);
			ADD_FAILURE() << "nothing was thrown";
		}
		catch (AudioFilterException const& exception)
		{
			EXPECT_EQ(exception.GetAudioFilter(), filter);
			EXPECT_EQ(exception.GetResultCode(), static_cast<int>(0xF865001E));
			EXPECT_STREQ(exception.what(), "Caught machine exception while prerolling audio filter.");
		}
	}
	// Each system has codes of its own.
	char message[128];
	std::snprintf(message, sizeof(message),
		"Machine exception 0x%08X in SN::AudioFilterRenderer::ProcessAudioData",
		zorvcore::utility::exceptions::RunGuarded(fault));
	EXPECT_THAT(capture.GetMessages(), testing::Each(std::string(message)));
	EXPECT_EQ(capture.GetMessages().size(), 2u);
	filter->mFault = [] { throw std::runtime_error("of the effect"); };
	EXPECT_THROW(renderer->ProcessAudioData(buffer, kTimeZero), std::runtime_error);
	filter->mFault = {};
	renderer->ProcessAudioData(buffer, kTimeZero);
	EXPECT_EQ(Heard(buffer), std::vector<float>(16, 0.5f));
}

TEST(AudioFilterRenderer, AClonePlaysItsOwnEffect)
{
	ScopedContext const context;
	auto const bypass = MakeObject<FakeParameter>(0.0f);
	auto const gain =
		MakeObject<FakeParameter>([](TickTime const& inTime) { return inTime < At(50) ? 2.0f : 3.0f; });
	auto const filter = MakeObject<FakeFilter>(300u);
	auto const second = MakeObject<FakeFilter>();
	auto const renderer = Make(context, filter, {bypass, gain}, second);
	renderer->Preroll(kTimeZero, false);
	bypass->mLog->clear();
	gain->mLog->clear();

	auto const clone = renderer->Clone(k44100Hz, 512, 64);
	EXPECT_THAT(*bypass->mLog, ElementsAre("clone", "init 64 5760000"));
	EXPECT_THAT(*gain->mLog, ElementsAre("clone", "init 64 5760000", "control"));
	ASSERT_TRUE(filter->mClone);
	EXPECT_EQ(clone->GetDelay(), TickTime(300, k44100Hz));

	UpdateControls(clone, 100);
	EXPECT_EQ(filter->mClone->mParameters[0], 3.0f);
	EXPECT_EQ(filter->mParameters[0], 2.0f);
	UpdateControls(renderer, 0);
	EXPECT_EQ(filter->mClone->mParameters[0], 3.0f);

	second->TakeLog();
	clone->InitializeAudioFilter();
	EXPECT_THAT(filter->mClone->TakeLog(), ElementsAre("initialize 512 5760000 2"));
	EXPECT_THAT(second->TakeLog(), ElementsAre("initialize 512 5760000 2"));
	dsp::AudioBuffer buffer = MakeBuffer(2, 512, 1.0f);
	clone->ProcessAudioData(buffer, kTimeZero);
	EXPECT_EQ(Heard(buffer)[511], 3.0f);

	// Blocks of the clone's own length fit into its delay.
	auto const off = Make(context, filter, ConstantParameters({1.0f}))->Clone(k44100Hz, 512, 64);
	off->Preroll(kTimeZero, false);
	dsp::AudioBuffer late = MakeBuffer(2, 512, 1.0f);
	off->ProcessAudioData(late, kTimeZero);
	EXPECT_EQ(Heard(late)[299], 0.0f);
	EXPECT_EQ(Heard(late)[300], 1.0f);
	EXPECT_EQ(Heard(late)[511], 1.0f);
}

TEST(AudioFilterRenderer, TheSecondEffectProcessesWholeStretches)
{
	ScopedContext const context;
	auto const filter = MakeObject<FakeFilter>();
	InterfaceRef<IOfflineAudioProcessor> const with(Make(context, filter, {}, MakeObject<FakeFilter>()));
	EXPECT_EQ(with->GetOfflineLatency(), kTimeMax);
	InterfaceRef<IOfflineAudioProcessor> const without(Make(context, filter, {}));
	EXPECT_THROW(without->GetOfflineLatency(), NullPtrException);
}

TEST(AudioFilterRenderer, RefusesWhatCannotRun)
{
	ScopedContext const context;
	auto const factory = SonaroFactory::CreateClassRef();
	auto const filter = MakeObject<FakeFilter>();
	AudioChannelLayout const& mono = VX::kAudioChannelLayout_Mono;
	InterfaceRef<IAudioProcessor> made;
	EXPECT_EQ(factory->CreateAudioFilterRenderer({}, {}, {}, {}, false, {}, {}, &made), eInvalidArgument);
	EXPECT_EQ(
		factory->CreateAudioFilterRenderer({}, k48000Hz, filter, {}, false, {}, mono, &made), eNullPointer);
	EXPECT_EQ(factory->CreateAudioFilterRenderer(context, FrameRate(), filter, {}, false, {}, mono, &made),
		eInvalidArgument);
	EXPECT_THROW(factory->CreateAudioFilterRenderer(context, k48000Hz, {}, filter, false, {}, mono, &made),
		NullPtrException);
	EXPECT_FALSE(made);
}

TEST(AudioFilterControl, SetsTheEffectAndReadsItOnce)
{
	auto const filter = MakeObject<FakeFilter>();
	filter->mParameters[2] = 4.0f;
	AudioFilterControl control(filter, 2);
	EXPECT_EQ(control.GetValue(), 4.0f);
	filter->mParameters[2] = 6.0f;
	EXPECT_EQ(control.GetValue(), 4.0f);

	auto const clone = boost::static_pointer_cast<AudioFilterControl>(control.Clone());
	clone->SetValue(7.0f);
	EXPECT_EQ(filter->mParameters[2], 7.0f);
	EXPECT_EQ(control.GetValue(), 4.0f);
}

} // namespace SN::AudioFilterRendererTest
