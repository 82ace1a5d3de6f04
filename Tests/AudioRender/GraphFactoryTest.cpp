#include "Sonaro/GraphFactory.h"

#include "AudioRender/Core/AudioRenderContext.h"
#include "Sonaro/AudioTrackRenderableItems.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Support/Answers.h"
#include "Support/Contexts.h"
#include "Support/FakeParameter.h"
#include "Support/Fakes.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace SN::GraphFactoryTest
{
namespace
{

using namespace Testing;
using zorvcore::classref::MakeObject;

constexpr unsigned kFrames = 200;

// Halves the one that goes and adds the one that comes.
class Halves final : public Answers<IAudioTransition>
{
public:
	void GetGainValue(AudioTransitionParameters const& inParameters, float, float& outOutgoingGain,
		float& outIncomingGain) override
	{
		outOutgoingGain = inParameters.mFirst == 3 ? 0.5f : 0.0f;
		outIncomingGain = 1.0f;
	}
};

// What a host says of each node beyond the defaults is what the node is: source, place, layout.
TEST(GraphFactory, DefaultsPlayASequenceAsItIs)
{
	GraphFactory const factory;
	auto const context = factory.CreateAudioRenderContext();
	AudioChannelLayout const& stereo = VX::kAudioChannelLayout_Stereo;
	auto const stream = factory.CreateAudioStreamRenderer(
		{.mContext = context, .mFrameRate = k48000Hz, .mSource = MakeObject<FakeSource>(2u, 1000)});
	auto const clip = factory.CreateAudioClipRenderer({
		.mContext = context,
		.mFrameRate = k48000Hz,
		.mGenerators = {{stream, {{0, 1}, {1, 0}}}},
		.mChannelLayout = stereo,
		.mStartOffset = At(50),
	});
	InterfaceRef<IAudioTrackRenderableItem> const item = factory.CreateRealtimeAudioClipTrackItemRenderer(
		{.mContext = context, .mFrameRate = k48000Hz, .mSource = clip});
	item->Init(At(0), At(1000), At(0), k48000Hz);
	auto const track = factory.CreateAudioClipTrackRenderer({
		.mContext = context,
		.mFrameRate = k48000Hz,
		.mItems = {CreateSilentAudioTrackRenderableItem(At(-10), At(0), k48000Hz), item,
			CreateSilentAudioTrackRenderableItem(At(1000), At(2000), k48000Hz)},
		.mChannels = stereo,
	});
	auto const master = factory.CreateAudioMixTrackRenderer({
		.mContext = context,
		.mFrameRate = k48000Hz,
		.mSource = factory.CreateAudioTrackInletRenderer(context, k48000Hz, {track}, stereo),
		.mChannels = stereo,
	});
	auto const group = factory.CreateAudioTrackGroupRenderer(
		{.mContext = context, .mFrameRate = k48000Hz, .mGenerators = {track, master}, .mChannels = stereo});

	group->Preroll(kTimeZero, false);
	Samples expected(2);
	for (unsigned frame = 0; frame < kFrames; ++frame)
	{
		expected[0].push_back(PositionSample(1, 50 + frame));
		expected[1].push_back(PositionSample(0, 50 + frame));
	}
	EXPECT_EQ(DescribeDifference(PullWhole(*group, {.mFrames = kFrames, .mChannels = 2}), expected), "");
	context->Clear();
}

TEST(GraphFactory, AContextIsWhatItsSettingsSay)
{
	Prefetcher prefetcher;
	for (unsigned flag = 0; flag < 4; ++flag)
	{
		auto const made = GraphFactory().CreateAudioRenderContext({
			.mMaxBlockSize = 777,
			.mPrefetchEnabled = true,
			.mContextOption = flag == 0,
			.mRangeStart = At(1),
			.mRangeEnd = At(2),
			.mControlInterval = 33,
			.mMeterInterval = At(3),
			.mPrefetcher = &prefetcher,
			.mRenderName = ImmutableString("name"),
			.mFaderParamFlag = flag == 0,
			.mPannerParamFlag = flag == 1,
			.mFilterParamFlag = flag == 2,
			.mSendParamFlag = flag == 3,
			.mRenderQuality = RenderQuality::kLow,
		});
		InterfaceRef<AudioRenderContext> const context(made);
		EXPECT_EQ(context->GetMaxBlockSize(), 777u);
		EXPECT_TRUE(context->IsPrefetchEnabled());
		EXPECT_EQ(context->GetContextOption(), flag == 0);
		EXPECT_EQ(context->GetRangeStart(), At(1));
		EXPECT_EQ(context->GetRangeEnd(), At(2));
		EXPECT_EQ(context->GetControlInterval(), 33u);
		EXPECT_EQ(context->GetMeterInterval(), At(3));
		EXPECT_EQ(context->GetPrefetcher(), &prefetcher);
		EXPECT_EQ(context->GetRenderName(), ImmutableString("name"));
		EXPECT_EQ(context->GetFaderParamFlag(), flag == 0);
		EXPECT_EQ(context->GetPannerParamFlag(), flag == 1);
		EXPECT_EQ(context->GetFilterParamFlag(), flag == 2);
		EXPECT_EQ(context->GetSendParamFlag(), flag == 3);
		EXPECT_EQ(context->GetRenderQuality(), RenderQuality::kLow);
		EXPECT_FALSE(GraphFactory().CreateAudioRenderContextForPrefetchThread(made)->IsPrefetchEnabled());
	}
}

// Each sample is the sum of two frames of position sources, which tells where both were read.
TEST(GraphFactory, JoinsReadBothSidesWhereTheirSettingsSay)
{
	ScopedContext const context;
	GraphFactory const factory;
	auto const first = MakeObject<FakeGenerator>(1u);
	auto const second = MakeObject<FakeGenerator>(
		1u, [](unsigned long long, long long inFrame) { return 0.5f * static_cast<float>(inFrame); });
	auto const transition = factory.CreateAudioTransitionRenderer({
		.mContext = context.Get(),
		.mFrameRate = k48000Hz,
		.mTransition = MakeObject<Halves>(),
		.mParameters = {3, 0, 0},
		.mOutgoing = first,
		.mIncoming = second,
		.mOutgoingStartTime = At(100),
		.mIncomingStartTime = At(900),
		.mTransitionStartTime = At(1000),
		.mTransitionDuration = At(77),
	});
	Samples const mixed = PullWhole(*transition, {.mFrames = 1});
	EXPECT_EQ(mixed[0][0], 0.5f * PositionSample(0, 900) + 0.5f * 100);

	auto const join = factory.CreateAudioMixRenderer({
		.mContext = context.Get(),
		.mFrameRate = k48000Hz,
		.mFirst = first,
		.mFirstTimeScale = 2.0,
		.mSecond = second,
		.mSecondTimeScale = 3.0,
		.mProcessor = factory.CreateAudioChannelMatrixRenderer(context.Get(), k48000Hz, {{0, {0}}, {1, {0}}}),
	});
	Samples const joined = PullWhole(*join, {.mStartFrame = 10, .mFrames = 1});
	EXPECT_EQ(joined[0][0], PositionSample(0, 20) + 0.5f * 30);
}

TEST(GraphFactory, ProcessorsHaveTheirControlsAndLayouts)
{
	ScopedContext const context;
	GraphFactory const factory;
	AudioChannelLayout const& mono = VX::kAudioChannelLayout_Mono;
	AudioChannelLayout const& stereo = VX::kAudioChannelLayout_Stereo;
	InterfaceRef<IRenderableAudioComponentParam> const control = MakeObject<FakeParameter>(0.25f);
	auto const panner = factory.CreateAudioPanProcessorRenderer(
		{.mContext = context.Get(), .mFrameRate = k48000Hz, .mType = kPanMonoToStereo, .mParams = {control}});
	auto const direct = factory.CreateDirectAudioPanProcessorRenderer({
		.mContext = context.Get(),
		.mFrameRate = k48000Hz,
		.mOutputChannels = 5,
		.mMatrix = {{0, {3}}},
		.mParams = {control},
	});
	auto const copies = factory.CreateDefaultMultiChannelAudioPanProcessorRenderer({
		.mContext = context.Get(),
		.mFrameRate = k48000Hz,
		.mInputLayout = stereo,
		.mOutputLayout = mono,
	});
	auto const mixer = factory.CreateChannelMixerAudioPanProcessorRenderer(stereo, mono, {{1.0f}, {2.0f}});
	struct
	{
		char const* mName;
		InterfaceRef<IAudioPanProcessor> mPanner;
		unsigned mInputs;
		unsigned mOutputs;
	} const cases[] = {
		{"by type", panner, 1, 2},
		{"direct", direct, 1, 5},
		{"copies", copies, 2, 1},
		{"mixer", mixer, 2, 1},
		{"none", factory.CreateNoneAudioPanProcessorRenderer(context.Get(), stereo), 2, 2},
	};
	for (auto const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_EQ(test.mPanner->GetNumInputChannels(), test.mInputs);
		EXPECT_EQ(test.mPanner->GetNumOutputChannels(), test.mOutputs);
	}

	// The send, which its track hears unchanged, is found under its target.
	InterfaceRef<UnknownBase> const target = MakeObject<FakeProcessor>(1.0f);
	auto const send = factory.CreateAudioSendRenderer({
		.mContext = context.Get(),
		.mFrameRate = k48000Hz,
		.mSendTarget = target,
		.mParams = {control},
		.mPanner = panner,
	});
	EXPECT_EQ(context->FindCachedGenerator(target), send);
	auto const fader = factory.CreateAudioFaderRenderer(context.Get(), k48000Hz, {control});
	InterfaceRef<IParameterOwnerMixin>(fader)->UpdateControls(kTimeZero);
	dsp::AudioBuffer block(1, 4);
	block.GetChannel(0)[0] = 1.0f;
	block.NoteBufferWrite(0, 4);
	fader->ProcessAudioData(block, kTimeZero);
	EXPECT_EQ(block.GetChannel(0)[0], 0.25f);
	EXPECT_TRUE(factory.CreateAudioMeterRenderer(context.Get(), k48000Hz, {}));
}

struct Refusal
{
	int mResult = kSuccess;
	std::string mWhat;
};

TEST(GraphFactory, RefusalsReachTheHostInItsOwnWay)
{
	ScopedContext const context;
	InterfaceRef<IAudioRenderContext> const none;
	auto const source = MakeObject<FakeGenerator>(1u);
	AudioChannelLayout const& mono = VX::kAudioChannelLayout_Mono;
	std::vector<Refusal> refusals;
	auto const note = [&](int inResult, char const* inWhat) { refusals.push_back({inResult, inWhat}); };
	auto const fail = [](int, char const* inWhat) { throw std::runtime_error(inWhat); };

	struct Case
	{
		char const* mWhat;
		int mResult;
		// Whether something came back.
		std::function<bool(decltype(GraphFactory(note)) const&)> mCreate;
	};
	Case const cases[] = {
		{"a render context", eNullPointer,
			[](auto const& inFactory)
			{ return inFactory.CreateAudioRenderContext({.mPrefetchEnabled = true}).IsValid(); }},
		{"a render context", eInvalidArgument,
			[](auto const& inFactory)
			{ return inFactory.CreateAudioRenderContext({.mRangeEnd = kTimeMax + kTimeMax}).IsValid(); }},
		{"a stream", eNullPointer,
			[](auto const& inFactory) { return inFactory.CreateAudioStreamRenderer({}).IsValid(); }},
		{"a clip", eInvalidArgument,
			[&](auto const& inFactory)
			{ return inFactory.CreateAudioClipRenderer({.mContext = context.Get()}).IsValid(); }},
		{"an item", eInvalidArgument,
			[&](auto const& inFactory)
			{
				return inFactory
					.CreateRealtimeAudioClipTrackItemRenderer({.mContext = context.Get(), .mSource = source})
					.IsValid();
			}},
		{"an item", eNullPointer,
			[&](auto const& inFactory)
			{
				return inFactory
					.CreateRealtimeAudioClipTrackItemRenderer({.mFrameRate = k48000Hz, .mSource = source})
					.IsValid();
			}},
		{"a transition", eNullPointer,
			[](auto const& inFactory) { return inFactory.CreateAudioTransitionRenderer({}).IsValid(); }},
		{"a mix", eNullPointer,
			[](auto const& inFactory) { return inFactory.CreateAudioMixRenderer({}).IsValid(); }},
		{"a track", eNullPointer,
			[](auto const& inFactory) { return inFactory.CreateAudioClipTrackRenderer({}).IsValid(); }},
		{"a submix", eNullPointer,
			[](auto const& inFactory) { return inFactory.CreateAudioMixTrackRenderer({}).IsValid(); }},
		{"an inlet", eNullPointer,
			[&](auto const& inFactory)
			{ return inFactory.CreateAudioTrackInletRenderer(none, k48000Hz, {}, mono).IsValid(); }},
		{"a sequence", eNullPointer,
			[](auto const& inFactory) { return inFactory.CreateAudioTrackGroupRenderer({}).IsValid(); }},
		{"one more instance of a sequence", -1,
			[&](auto const& inFactory) {
				return inFactory.CreateAudioTrackGroupRendererViaCloning(context.Get(), k48000Hz, source)
					.IsValid();
			}},
		{"a panner", eFailure,
			[&](auto const& inFactory)
			{
				return inFactory
					.CreateAudioPanProcessorRenderer({.mContext = context.Get(), .mFrameRate = k48000Hz})
					.IsValid();
			}},
		{"a panner", eInvalidArgument,
			[&](auto const& inFactory)
			{
				return inFactory
					.CreateDirectAudioPanProcessorRenderer(
						{.mContext = context.Get(), .mFrameRate = k48000Hz, .mOutputChannels = 65})
					.IsValid();
			}},
		{"a channel mixer", eInvalidArgument,
			[&](auto const& inFactory)
			{ return inFactory.CreateChannelMixerAudioPanProcessorRenderer(mono, mono, {}).IsValid(); }},
		{"a channel matrix", eInvalidArgument,
			[&](auto const& inFactory) {
				return inFactory.CreateAudioChannelMatrixRenderer(context.Get(), k48000Hz, {{0, {64}}})
					.IsValid();
			}},
		{"a fader", eNullPointer,
			[&](auto const& inFactory)
			{ return inFactory.CreateAudioFaderRenderer(none, k48000Hz, {}).IsValid(); }},
		{"a meter", eNullPointer,
			[&](auto const& inFactory)
			{ return inFactory.CreateAudioMeterRenderer(none, k48000Hz, {}).IsValid(); }},
		{"an effect", eInvalidArgument,
			[](auto const& inFactory) { return inFactory.CreateAudioFilterRenderer({}).IsValid(); }},
		{"a send", eNullPointer,
			[](auto const& inFactory) { return inFactory.CreateAudioSendRenderer({}).IsValid(); }},
	};
	GraphFactory const factory(note);
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mWhat);
		refusals.clear();
		EXPECT_FALSE(test.mCreate(factory)) << "a handler that returns";
		ASSERT_EQ(refusals.size(), 1u);
		EXPECT_EQ(refusals[0].mResult, test.mResult);
		EXPECT_EQ(refusals[0].mWhat, test.mWhat);
	}

	try
	{
		GraphFactory().CreateAudioStreamRenderer({.mContext = context.Get()});
		ADD_FAILURE() << "nothing was thrown";
	}
	catch (zorvcore::config::zorv_exception const& error)
	{
		EXPECT_EQ(error.GetResultCode(), eInvalidArgument);
		EXPECT_STREQ(error.what(), "the render engine could not create a stream");
	}
	EXPECT_THROW(GraphFactory(fail).CreateAudioStreamRenderer({}), std::runtime_error);
}

} // namespace
} // namespace SN::GraphFactoryTest
