#include "AudioRender/Core/AudioRenderContext.h"

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "Support/Engine.h"

namespace SN::AudioRenderContextTest
{

InterfaceRef<AudioRenderContext> ClassOf(ScopedContext const& inContext)
{
	return InterfaceRef<AudioRenderContext>(inContext.Get());
}

TEST(AudioRenderContext, CreationChecksThePrefetcherBeforeTheTimes)
{
	Prefetcher prefetcher;
	TickTime const tick = TickTime::FromTicks(1);
	struct Case
	{
		char const* mName;
		bool mPrefetch;
		Prefetcher* mPrefetcher;
		TickTime mStart;
		TickTime mEnd;
		int mExpected;
	};
	Case const cases[] = {
		{"the whole time line", false, nullptr, -kTimeMax, kTimeMax, kSuccess},
		{"prefetch with a prefetcher", true, &prefetcher, kTimeZero, kTimeZero, kSuccess},
		{"no prefetch with a prefetcher", false, &prefetcher, kTimeZero, kTimeZero, kSuccess},
		{"prefetch without a prefetcher", true, nullptr, kTimeZero, kTimeZero, eNullPointer},
		{"starts a tick too early", false, nullptr, -kTimeMax - tick, kTimeZero, eInvalidArgument},
		{"ends a tick too late", false, nullptr, kTimeZero, kTimeMax + tick, eInvalidArgument},
		{"the other bounds are free", false, nullptr, kTimeNotATime, -kTimeNotATime, kSuccess},
		{"both faults", true, nullptr, -kTimeNotATime, kTimeNotATime, eNullPointer},
	};
	auto const factory = SonaroFactory::CreateClassRef();
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		InterfaceRef<IAudioRenderContext> context;
		EXPECT_EQ(factory->CreateAudioRenderContext(64, test.mPrefetch, false, test.mStart, test.mEnd, 16,
					  kTimeZero, test.mPrefetcher, ImmutableString("name"), false, false, false, false,
					  RenderQuality::kHigh, &context),
			test.mExpected);
		EXPECT_EQ(context.IsValid(), test.mExpected == kSuccess);
	}
}

TEST(AudioRenderContext, NestingHidesAndRestoresTheOuterLevel)
{
	Prefetcher prefetcher;
	ScopedContext const context(64, &prefetcher);
	auto const concrete = ClassOf(context);
	InterfaceRef<IAudioGenerator> silence;
	SonaroFactory::CreateClassRef()->CreateSilentRenderer({}, &silence);
	auto const key = MakeObject<FakeGenerator>(1);

	context->IncrementInstanceIndex();
	context->IncrementInstanceIndex();
	concrete->AddCachedGenerator(key, silence);
	AudioRenderContextClient outer;
	EXPECT_EQ(outer.Init(context, k48000Hz), kSuccess);
	EXPECT_FALSE(context->IsNotTopLevelPlayback());

	context->PushNestingLevel();
	AudioRenderContextClient inner;
	inner.Init(context, k48000Hz);
	EXPECT_EQ(context->GetNestingDepth(), 1u);
	EXPECT_EQ(concrete->GetInstanceIndex(), 0u);
	EXPECT_FALSE(context->FindCachedGenerator(key));
	EXPECT_TRUE(context->IsNotTopLevelPlayback());

	context->PopNestingLevel();
	EXPECT_EQ(concrete->GetInstanceIndex(), 2u);
	EXPECT_EQ(context->FindCachedGenerator(key), silence);
	EXPECT_EQ(outer.GetNestingDepth(), 0u);
	EXPECT_EQ(inner.GetNestingDepth(), 1u) << "a client keeps the place where it was initialised";

	// The two clients reserve and find under different keys.
	inner.ReserveStackAudioBuffer(2, 64, ImmutableString("tag"));
	EXPECT_TRUE(inner.GetStackAudioBuffer(2, ImmutableString("tag")));
	EXPECT_FALSE(outer.GetStackAudioBuffer(2, ImmutableString("tag")));
}

using Object = InterfaceRef<UnknownBase>;

// One of the maps of a context, with two values for it.
struct Map
{
	char const* mName;
	Object mFirst;
	Object mSecond;
	std::function<void(Object const& inKey, Object const& inValue)> mAdd;
	std::function<Object(Object const& inKey)> mFind;
};

std::vector<Map> GetMaps(InterfaceRef<AudioRenderContext> const& inContext)
{
	Object const first = MakeObject<FakeGenerator>(1);
	Object const second = MakeObject<FakeGenerator>(1);
	InterfaceRef<IAudioGenerator> firstSilence;
	InterfaceRef<IAudioGenerator> secondSilence;
	SonaroFactory::CreateClassRef()->CreateSilentRenderer({}, &firstSilence);
	SonaroFactory::CreateClassRef()->CreateSilentRenderer({}, &secondSilence);
	AudioRenderContext& context = *inContext;
	return {
		{"parameters", MakeObject<FakeParameter>(0.0f), MakeObject<FakeParameter>(0.0f),
			[&](auto const& inKey, auto const& inValue) { context.AddParameter(inKey, inValue); },
			[&](auto const& inKey) { return context.FindParameter(inKey); }},
		{"streams", first, second,
			[&](auto const& inKey, auto const& inValue) { context.AddStreamRenderer(inKey, inValue); },
			[&](auto const& inKey) { return context.FindStreamRenderer(inKey); }},
		{"contents", first, second,
			[&](auto const& inKey, auto const& inValue)
			{ context.AddContentRenderer(inKey, k48000Hz, k44100Hz, inValue); },
			[&](auto const& inKey) { return context.FindContentRenderer(inKey, k48000Hz, k44100Hz); }},
		{"clones", first, second,
			[&](auto const& inKey, auto const& inValue) { context.AddClone(inKey, inValue); },
			[&](auto const& inKey) { return context.FindClone(inKey); }},
		{"cached generators", firstSilence, secondSilence,
			[&](auto const& inKey, auto const& inValue) { context.AddCachedGenerator(inKey, inValue); },
			[&](auto const& inKey) { return context.FindCachedGenerator(inKey); }},
		{"groups", first, second,
			[&](auto const& inKey, auto const& inValue) { context.AddTrackGroup(inKey, inValue); },
			[&](auto const& inKey)
			{
				unsigned long long count = 0;
				return context.FindTrackGroup(inKey, count);
			}},
		{"tracks", first, second,
			[&](auto const& inKey, auto const& inValue) { context.AddTrackRenderer(inKey, inValue); },
			[&](auto const& inKey) { return context.FindTrackRenderer(inKey); }},
	};
}

TEST(AudioRenderContext, MapsKeepTheFirstEntryExceptTrackRenderersAndAllForgetAtAClear)
{
	ScopedContext const context;
	auto const concrete = ClassOf(context);
	auto const key = MakeObject<FakeGenerator>(1);
	auto const maps = GetMaps(concrete);
	for (Map const& map : maps)
	{
		SCOPED_TRACE(map.mName);
		EXPECT_FALSE(map.mFind(key));
		map.mAdd(key, map.mFirst);
		map.mAdd(key, map.mSecond);
		EXPECT_EQ(map.mFind(key), std::string(map.mName) == "tracks" ? map.mSecond : map.mFirst);
		EXPECT_FALSE(map.mFind(MakeObject<FakeGenerator>(1)));
		// One object is one key, through whatever interface it is named.
		EXPECT_TRUE(map.mFind(InterfaceRef<IAudioGeneratorPrivate>(key)));
	}
	EXPECT_FALSE(concrete->FindContentRenderer(key, k44100Hz, k48000Hz));
	unsigned long long count = 0;
	concrete->FindTrackGroup(key, count);
	EXPECT_EQ(count, 2u);

	context->Clear();
	EXPECT_EQ(context->GetRenderName(), ImmutableString());
	concrete->FindTrackGroup(key, count);
	EXPECT_EQ(count, 0u);
	for (Map const& map : maps)
	{
		SCOPED_TRACE(map.mName);
		EXPECT_FALSE(map.mFind(key));
		map.mAdd(key, map.mFirst);
		EXPECT_EQ(map.mFind(key), map.mFirst) << "it can be used again";
	}

	// What outer levels hold goes, too.
	InterfaceRef<IAudioGenerator> silence;
	SonaroFactory::CreateClassRef()->CreateSilentRenderer({}, &silence);
	std::weak_ptr<Unknown> const outer = silence.GetUnknown();
	concrete->AddCachedGenerator(MakeObject<FakeGenerator>(1), std::exchange(silence, {}));
	context->PushNestingLevel();
	EXPECT_FALSE(outer.expired());
	context->Clear();
	EXPECT_TRUE(outer.expired());
}

TEST(AudioRenderContext, ThePrefetchThreadGetsAContextOfItsOwn)
{
	auto const factory = SonaroFactory::CreateClassRef();
	Prefetcher prefetcher;
	InterfaceRef<IAudioRenderContext> source;
	factory->CreateAudioRenderContext(777, true, true, TickTime::FromTicks(1), TickTime::FromTicks(2), 33,
		TickTime::FromTicks(44), &prefetcher, ImmutableString("name"), true, false, true, false,
		RenderQuality::kMaximum, &source);
	source->SetImmediateRender(true);
	source->SetDelayCompensationDisabled(true);
	source->PushNestingLevel();

	InterfaceRef<IAudioRenderContext> made;
	ASSERT_EQ(factory->CreateAudioRenderContextForPrefetchThread(source, made), kSuccess);
	InterfaceRef<AudioRenderContext> const context(made);
	EXPECT_EQ(context->GetMaxBlockSize(), 777u);
	EXPECT_EQ(context->GetControlInterval(), 33u);
	EXPECT_EQ(context->GetMeterInterval(), TickTime::FromTicks(44));
	EXPECT_EQ(context->GetRenderQuality(), RenderQuality::kMaximum);
	EXPECT_TRUE(context->GetFaderParamFlag());
	EXPECT_FALSE(context->GetPannerParamFlag());
	EXPECT_TRUE(context->GetFilterParamFlag());
	EXPECT_FALSE(context->GetSendParamFlag());
	EXPECT_FALSE(context->IsPrefetchEnabled());
	EXPECT_EQ(context->GetPrefetcher(), nullptr);
	EXPECT_EQ(context->GetRenderName(), ImmutableString());
	EXPECT_EQ(context->GetNestingDepth(), 0u);
	EXPECT_FALSE(context->IsImmediateRender());
	EXPECT_FALSE(context->IsDelayCompensationDisabled());
	EXPECT_NE(&context->GetTempBufferPool(), &InterfaceRef<AudioRenderContext>(source)->GetTempBufferPool());

	EXPECT_THROW(
		factory->CreateAudioRenderContextForPrefetchThread({}, made), zorvcore::config::zorv_exception);
	source->PopNestingLevel();
}

TEST(AudioRenderContextClient, InitReportsAndKeepsWhatItWasGiven)
{
	ScopedContext const context;
	AudioRenderContextClient client;
	EXPECT_THROW(client.GetMaxBlockSize(), zorvcore::config::zorv_exception);
	EXPECT_EQ(client.Init({}, k48000Hz), eNullPointer);
	EXPECT_EQ(client.Init(context, FrameRate()), eInvalidArgument);
	EXPECT_EQ(client.GetMaxBlockSize(), 256u) << "the context is stored all the same";
	EXPECT_EQ(client.Init(context, k44100Hz), kSuccess);
	AudioRenderContextClient const copy = client;
	EXPECT_EQ(copy.GetFrameRate(), k44100Hz);
}

} // namespace SN::AudioRenderContextTest
