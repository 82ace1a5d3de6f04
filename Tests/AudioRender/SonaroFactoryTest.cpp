#include "Sonaro/SonaroFactory.h"

#include "Sonaro/AudioUtilities.h"
#include "Support/Engine.h"
#include "zorvcore/config/InitializerRegistrar.h"
#include "zorvcore/debug/DebugDatabase.h"

namespace SN::SonaroFactoryTest
{

TEST(SonaroFactory, LivesFromTheFirstReferenceToTheLast)
{
	EXPECT_FALSE(SonaroFactory::CreateClassRefIfSingletonExists());
	EXPECT_FALSE(SonaroFactory::CreateClassRefIfSingletonExists()) << "asking makes nothing";
	{
		auto const factory = SonaroFactory::CreateClassRef();
		InterfaceRef<UnknownBase> instance;
		SonaroFactory::CreateInstanceRef(instance);
		EXPECT_EQ(instance, factory);
		EXPECT_EQ(SonaroFactory::CreateClassRef(), factory);
		EXPECT_EQ(SonaroFactory::CreateClassRefIfSingletonExists(), factory);
		EXPECT_EQ(InterfaceRef<ISonaroFactory>(instance), factory);
		EXPECT_EQ(static_cast<InterfaceRef<UnknownBase>>(*factory), factory);
	}
	EXPECT_FALSE(SonaroFactory::CreateClassRefIfSingletonExists());
}

TEST(SonaroFactory, RacingCallersGetOneObjectThatDiesOnce)
{
	std::atomic<int> mismatches = 0;
	auto const race = [&]
	{
		for (int i = 0; i < 2000; ++i)
		{
			auto const a = SonaroFactory::CreateClassRef();
			auto const b = SonaroFactory::CreateClassRefIfSingletonExists();
			mismatches += a == b ? 0 : 1;
		}
	};
	std::thread other(race);
	race();
	other.join();
	EXPECT_EQ(mismatches, 0);
	EXPECT_FALSE(SonaroFactory::CreateClassRefIfSingletonExists());
}

TEST(SilentRenderer, IsSilentInAnyLayoutDirectionAndSize)
{
	auto const factory = SonaroFactory::CreateClassRef();
	for (AudioChannelLayout const& layout : {AudioChannelLayout(), VX::kAudioChannelLayout_Stereo})
	{
		InterfaceRef<IAudioGenerator> silence;
		ASSERT_EQ(factory->CreateSilentRenderer(layout, &silence), kSuccess);
		InterfaceRef<IAudioGeneratorPrivate> const description(silence);
		EXPECT_EQ(description->GetNumChannels(), layout.size());
		EXPECT_EQ(description->GetNumOutputChannels(), layout.size());
		EXPECT_EQ(description->GetAudioChannelLayout(), layout);
		EXPECT_EQ(description->GetGeneratorFrameRate(), k48000Hz);
		EXPECT_EQ(silence->Clone(), silence);

		silence->InitializeAudioFilters();
		silence->Preroll(kTimeZero, true);
		for (unsigned const channels : {1u, 2u, 7u})
		{
			dsp::AudioBuffer buffer(channels, 32);
			buffer.GetChannel(0)[0] = 1.0f;
			silence->GetAudioData(TickTime(-5, k48000Hz), buffer, channels == 2);
			EXPECT_TRUE(buffer.IsSilent());
		}
		silence->Reset();
		silence->ShutdownAudioFilters();

		// It may stand among cached tracks, and adds nothing there.
		dsp::AudioBuffer mix(1, 4);
		mix.GetChannel(0)[2] = 3.0f;
		InterfaceRef<ICachedAudioGenerator> const cached(silence);
		cached->GenerateAudio(4, kTimeZero, false);
		cached->MixCachedAudio(mix);
		EXPECT_EQ(mix.GetChannel(0)[2], 3.0f);
		EXPECT_TRUE(InterfaceRef<IAudioRenderGraphNodeInfo>(silence)->GetInputNodes().empty());
	}
}

TEST(Module, StartTakesTheNestingLimitFromTheDebugDatabase)
{
	auto& database = zorvcore::debug::DebugDatabase::Instance();
	std::string const key = "OQ.Sonaro.ComplexityBeforeRender";
	EXPECT_EQ(GetMaxNestableSequenceInstances(), 200u);
	database.SetEntry(key, "17 and more");
	EXPECT_EQ(GetMaxNestableSequenceInstances(), 200u) << "read at the start alone";
	zorvcore::config::StopRegisteredModules();
	zorvcore::config::StartRegisteredModules();
	EXPECT_EQ(GetMaxNestableSequenceInstances(), 17u);
	database.SetEntry(key, "200");
	zorvcore::config::StopRegisteredModules();
	zorvcore::config::StartRegisteredModules();
	EXPECT_EQ(GetMaxNestableSequenceInstances(), 200u);
	database.RemoveEntry(key);
}

} // namespace SN::SonaroFactoryTest
