#include "AudioRender/Source/AudioGeneratorDecorator.h"

#include "AudioRender/Source/AudioGeneratorContentSpeedAdapter.h"
#include "Support/Engine.h"

namespace SN::AudioGeneratorDecoratorTest
{

constexpr FrameRate k96000Hz{2646000};
constexpr FrameRate k24000Hz{10584000};

// What reaches the generator when each operation is called once, in this order: a preroll, a head start
// that is forced and one that is not, a prefetch and a pull.
std::vector<Call> CallAll(IAudioGenerator& ioGenerator, FakeGenerator& ioFake)
{
	ioFake.mCalls.clear();
	dsp::AudioBuffer buffer(1, 8);
	TickTime const odd(9, k96000Hz);
	ioGenerator.Preroll(odd, true);
	ioGenerator.FillInitialDelay(odd, TickTime(3, k96000Hz), true, true);
	ioGenerator.FillInitialDelay(odd, TickTime(3, k96000Hz), false, false);
	RequestPrefetch(ioGenerator, {odd, TickTime(17, k96000Hz)}, AsynchronousPrefetch);
	ioGenerator.GetAudioData(odd, buffer, true);
	return ioFake.mCalls;
}

TEST(AudioGeneratorDecorator, EachKindChangesWhatItPromises)
{
	constexpr long long frame = k96000Hz.GetTicksPerFrame();
	auto const at = [](double inFrames)
	{ return TickTime::FromTicks(static_cast<long long>(inFrames * static_cast<double>(frame))); };
	auto const fake = MakeObject<FakeGenerator>(1);
	fake->mDelay = at(4);

	auto const plain = MakeObject<AudioGeneratorDecorator>();
	plain->Init(fake);
	std::vector<Call> const unchanged{{"Preroll", at(9), 0, true},
		{"FillInitialDelay, forced", at(9), 3 * frame, true}, {"FillInitialDelay", at(9), 3 * frame, false},
		{"Prefetch 1", at(9), 8 * frame, false}, {"GetAudioData", at(9), 8, true}};
	EXPECT_EQ(CallAll(*plain, *fake), unchanged);
	EXPECT_EQ(plain->GetDelay(), at(4));

	InterfaceRef<IAudioGenerator> aligned;
	EXPECT_EQ(SonaroFactory::CreateClassRef()->CreateAlignToFrameRateAudioGeneratorDecorator(
				  fake, k48000Hz, &aligned),
		kSuccess);
	std::vector<Call> const onFrames{{"Preroll", at(8), 0, true},
		{"FillInitialDelay, forced", at(8), 3 * frame, true}, {"FillInitialDelay", at(8), 3 * frame, false},
		{"Prefetch 1", at(8), 8 * frame, false}, {"GetAudioData", at(8), 8, true}};
	EXPECT_EQ(CallAll(*aligned, *fake), onFrames);

	InterfaceRef<IAudioGenerator> adapted;
	EXPECT_EQ(AudioGeneratorContentSpeedAdapter::Create(fake, 2.0, &adapted), 0);
	std::vector<Call> const scaled{{"Preroll", at(9), 0, true},
		{"FillInitialDelay, forced", at(9), 3 * frame, true}, {"Prefetch 1", at(4.5), 4 * frame, false},
		{"GetAudioData", at(4.5), 8, true}};
	EXPECT_EQ(CallAll(*adapted, *fake), scaled);
	EXPECT_EQ(adapted->GetDelay(), kTimeZero);
	EXPECT_EQ(InterfaceRef<IAudioGeneratorPrivate>(adapted)->GetGeneratorFrameRate(), k24000Hz);
	EXPECT_EQ(InterfaceRef<IAudioGeneratorPrivate>(adapted)->GetNumChannels(), 1u);

	// A clone of any of them is a plain decorator around a clone.
	for (auto const& one : {InterfaceRef<IAudioGenerator>(plain), aligned, adapted})
	{
		auto const clone = one->Clone();
		InterfaceRef<FakeGenerator> const inner(
			InterfaceRef<IAudioRenderGraphNodeInfo>(clone)->GetInputNodes().at(0));
		ASSERT_TRUE(inner);
		EXPECT_NE(inner, fake);
		EXPECT_EQ(CallAll(*clone, *inner), unchanged);
	}
}

TEST(AudioGeneratorDecorator, ListensOnlyWhereItsGeneratorDoes)
{
	auto const outer = MakeObject<AudioGeneratorDecorator>();
	auto const inner = MakeObject<AudioGeneratorDecorator>();
	inner->Init(MakeObject<FakeGenerator>(1));
	outer->Init(inner);
	LiveAudioParameterMap parameters;
	outer->CollectLiveParameters(parameters);
	outer->NotifyRecordComplete({});
	EXPECT_TRUE(parameters.empty());

	auto const empty = MakeObject<AudioGeneratorDecorator>();
	EXPECT_THROW(empty->HasHistory(), zorvcore::config::NullPtrException);
	EXPECT_THROW(empty->GetNumChannels(), zorvcore::config::NullPtrException);
}

} // namespace SN::AudioGeneratorDecoratorTest
