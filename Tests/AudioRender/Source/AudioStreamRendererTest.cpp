#include "Sonaro/IOffsetablePreview.h"
#include "Support/Engine.h"
#include "Support/NaiveClip.h"
#include "Vexilon/BinaryData.h"

namespace SN::AudioStreamRendererTest
{

constexpr unsigned kMaxBlock = 256;

TEST(AudioStreamRenderer, EveryRangeIsTheSourcesSamplesAtTheirPlaces)
{
	std::mt19937 random(20240607);
	for (int trial = 0; trial < 300; ++trial)
	{
		NaiveStream naive;
		naive.mSourceChannels = 1 + static_cast<unsigned>(random() % 4);
		naive.mLength = static_cast<long long>(random() % 600);
		naive.mChannelIndex = random() % 2 == 0 ? -1 : static_cast<int>(random() % naive.mSourceChannels);
		naive.mPreviewOffset = static_cast<long long>(random() % 401) - 200;
		bool const prefetch = random() % 2 == 0;
		Prefetcher prefetcher;
		ScopedContext const context(kMaxBlock, prefetch ? &prefetcher : nullptr);
		auto const source = MakeObject<FakeSource>(
			naive.mSourceChannels, naive.mLength, SourceKind{random() % 2 == 0, random() % 2 == 0});
		auto const make = [&]
		{
			auto stream = MakeStream(context, source, naive.mChannelIndex);
			InterfaceRef<IOffsetablePreview>(stream)->AddPreviewOffset(At(naive.mPreviewOffset));
			return stream;
		};
		PullRange const range{static_cast<long long>(random() % 800) - 400,
			1 + static_cast<unsigned>(random() % 500), 1 + static_cast<unsigned>(random() % 5)};
		SCOPED_TRACE("trial " + std::to_string(trial));

		NaiveClip clip;
		clip.mStreams.push_back({naive, {}});
		for (unsigned channel = 0; channel < range.mChannels; ++channel)
		{
			clip.mStreams[0].second[channel] = channel;
		}
		auto const expected = clip.Render(range.mStartFrame, range.mFrames, range.mChannels);
		ASSERT_TRUE(Same(Pull(*make(), range, BlocksOf(kMaxBlock)), expected));
		ExpectAnySplitEqualsWhole(make, range, kMaxBlock);
		ASSERT_FALSE(testing::Test::HasFailure());
	}
}

TEST(AudioStreamRenderer, ReadsTheSourceAsItsKindAllows)
{
	struct Case
	{
		char const* mName;
		SourceKind mKind;
		bool mPrefetch;
		bool mGrowing;
		long long mFrame;
		std::vector<Call> mExpected;
	};
	Case const cases[] = {
		{"plain", {}, false, false, 0, {{"ReadAudio", At(0), 64, false}}},
		{"plain with prefetch", {}, true, false, 0, {{"ReadAudio", At(0), 64, false}}},
		{"async without prefetch", {false, true}, false, false, 0, {{"ReadAudio", At(0), 64, false}}},
		{"async with prefetch", {false, true}, true, false, 0, {{"ReadPrefetchedAudio", At(0), 64, false}}},
		{"file before its end", {true, false}, false, false, 999, {{"ReadAudio", At(999), 64, false}}},
		{"file at its end", {true, false}, false, false, 1000, {}},
		{"file beyond its end", {true, true}, true, false, 5000, {}},
		{"growing file at its end", {true, false}, false, true, 1000, {{"ReadAudio", At(1000), 64, false}}},
		{"no file at its end", {}, false, false, 1000, {{"ReadAudio", At(1000), 64, false}}},
		{"from ahead of the start into it", {}, false, false, -40, {{"ReadAudio", At(0), 24, false}}},
		{"ends at the start", {}, false, false, -64, {{"ReadAudio", At(0), 0, false}}},
		{"ends a frame ahead of the start", {}, false, false, -65, {}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		Prefetcher prefetcher;
		ScopedContext const context(kMaxBlock, test.mPrefetch ? &prefetcher : nullptr);
		auto const source = MakeObject<FakeSource>(2, 1000, test.mKind);
		source->mIsGrowing = test.mGrowing;
		auto const stream = MakeStream(context, source);
		dsp::AudioBuffer buffer(2, 64);
		stream->GetAudioData(At(test.mFrame), buffer, false);
		EXPECT_EQ(source->mCalls, test.mExpected);
		EXPECT_EQ(buffer.IsSilent(), test.mExpected.empty() || test.mFrame == -64);
	}
}

TEST(AudioStreamRenderer, PrefetchIsCutIntoRequestsThatMeet)
{
	struct Case
	{
		char const* mName;
		long long mStart;
		long long mEnd;
		std::vector<std::pair<long long, unsigned>> mExpected;
	};
	Case const cases[] = {
		{"long", 500, 200500, {{500, 65536}, {66036, 65536}, {131572, 65536}, {197108, 3392}}},
		{"one piece exactly", 0, 65536, {{0, 65536}}},
		{"across the start", -100, 50, {{0, 50}}},
		{"ends at the start", -100, 0, {}},
		{"ahead of the start", -100, -50, {}},
		{"empty", 70, 70, {}},
		{"ends before it starts", 70, 20, {}},
	};
	ScopedContext const context;
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		auto const source = MakeObject<FakeSource>(2, 1000, SourceKind{false, true});
		auto const stream = MakeStream(context, source);
		InterfaceRef<IOffsetablePreview>(stream)->AddPreviewOffset(At(1000));
		PrefetchRange const range{At(test.mStart + 1000), At(test.mEnd + 1000)};
		std::vector<std::pair<long long, unsigned>> found;
		for (SynchronousPrefetchRequest const& request : RequestPrefetch(*stream, range).mSynchronous)
		{
			EXPECT_EQ(request.source, source);
			EXPECT_EQ(request.time, At(request.time.ToFrame64(k48000Hz)));
			found.emplace_back(request.time.ToFrame64(k48000Hz), request.numSamples);
		}
		EXPECT_EQ(found, test.mExpected);
		auto const later = RequestPrefetch(*stream, range, AsynchronousPrepareForPrefetch);
		EXPECT_TRUE(later.mSynchronous.empty());
		EXPECT_EQ(later.mAsynchronous.size(), found.size());
	}
}

TEST(AudioStreamRenderer, AKeyMakesOneStreamThatIsItsOwnClone)
{
	ScopedContext const context;
	auto const source = MakeObject<FakeSource>(2, 1000);
	auto const key = MakeObject<FakeGenerator>(1);

	auto const shared = MakeStream(context, source, -1, key);
	EXPECT_EQ(MakeStream(context, source, 1, key), shared) << "the key decides, whatever the channel";
	EXPECT_EQ(shared->Clone(), shared);

	auto const single = MakeStream(context, source, 1);
	InterfaceRef<IOffsetablePreview>(single)->AddPreviewOffset(At(3));
	auto const clone = single->Clone();
	EXPECT_FALSE(clone == single);
	PullRange const range{-10, 100};
	EXPECT_TRUE(Same(PullWhole(*clone, range), PullWhole(*single, range)));
	InterfaceRef<IOffsetablePreview>(clone)->AddPreviewOffset(At(5));
	EXPECT_EQ(PullWhole(*single, {3, 1})[0][0], PositionSample(1, 0)) << "a clone's offset is its own";
}

TEST(AudioStreamRenderer, WithoutASourceOnlyTimeBeforeTheStartIsWritten)
{
	ScopedContext const context;
	for (int const channelIndex : {-1, 0})
	{
		auto const stream = MakeStream(context, {}, channelIndex);
		dsp::AudioBuffer buffer(1, 4);
		buffer.GetChannel(0)[0] = 7.0f;
		stream->GetAudioData(At(0), buffer, false);
		EXPECT_FALSE(buffer.IsSilent());
		EXPECT_EQ(buffer.GetChannel(0)[0], 7.0f);
		stream->GetAudioData(At(-9), buffer, false);
		EXPECT_TRUE(buffer.IsSilent());
	}
}

TEST(AudioStreamRenderer, ABlockBeyondTheContextsLargestIsCutShortNotOverrun)
{
	ScopedContext const context(16);
	auto const stream = MakeStream(context, MakeObject<FakeSource>(2, 1000), 1);
	Samples const pulled = PullWhole(*stream, {0, 40});
	EXPECT_EQ(pulled[0][15], PositionSample(1, 15));
	EXPECT_EQ(pulled[0][16], 0.0f);
	EXPECT_EQ(pulled[0][39], 0.0f);
}

TEST(AudioStreamRenderer, CreationChecksTheContextBeforeTheRate)
{
	auto const factory = SonaroFactory::CreateClassRef();
	ScopedContext const context;
	auto const source = MakeObject<FakeSource>(2, 1000);
	auto const key = MakeObject<FakeGenerator>(1);
	InterfaceRef<IAudioGenerator> const before = MakeObject<FakeGenerator>(1);
	InterfaceRef<IAudioGenerator> stream = before;
	EXPECT_EQ(factory->CreateAudioStreamRenderer({}, k48000Hz, source, 0, 1.0, key, &stream), eNullPointer);
	EXPECT_EQ(factory->CreateAudioStreamRenderer(context, FrameRate(), source, 0, 1.0, key, &stream),
		eInvalidArgument);
	EXPECT_EQ(stream, before);
	InterfaceRef<IAudioRenderContext> reference = context.Get();
	EXPECT_EQ(factory->CreateNordekAudioStreamRenderer(
				  reference, k48000Hz, source, 0, 1.0, VX::BinaryData(), &stream),
		kSuccess);
	EXPECT_FALSE(stream == before);
}

} // namespace SN::AudioStreamRendererTest
