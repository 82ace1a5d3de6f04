#include "AudioRender/Core/TempBufferPool.h"

#include "AudioRender/Core/StackAudioBufferTags.h"
#include "Support/Engine.h"

namespace SN::TempBufferPoolTest
{

ImmutableString const kTag("tag");
// While the statics of the program are made, in whatever order.
ImmutableString const sTagBeforeMain = StackAudioBufferTags::kAudioClipRenderer;

TEST(StackAudioBufferTags, AreThereBeforeMain)
{
	EXPECT_EQ(sTagBeforeMain, ImmutableString("AudioClipRenderer"));
}

TEST(TempBufferPool, ReservingAgainReplacesOnlyATooShortBuffer)
{
	TempBufferPool pool;
	pool.ReserveStackAudioBuffer(2, 64, 0, 0, kTag);
	auto const first = pool.GetStackAudioBuffer(2, 0, 0, kTag);
	pool.ReserveStackAudioBuffer(2, 32, 0, 0, kTag);
	pool.ReserveStackAudioBuffer(2, 64, 0, 0, kTag);
	EXPECT_EQ(pool.GetStackAudioBuffer(2, 0, 0, kTag), first);
	pool.ReserveStackAudioBuffer(2, 65, 0, 0, kTag);
	auto const second = pool.GetStackAudioBuffer(2, 0, 0, kTag);
	EXPECT_FALSE(second == first);
	EXPECT_GE(second->mBuffer.GetCapacity(), 65u);
	EXPECT_GE(first->mBuffer.GetCapacity(), 64u) << "who holds the old buffer keeps it";
}

TEST(TempBufferPool, EveryPartOfTheKeyMakesABufferOfItsOwn)
{
	struct Key
	{
		unsigned mChannels;
		unsigned mDepth;
		unsigned mInstance;
		ImmutableString mTag;
	};
	Key const keys[] = {{2, 0, 0, kTag}, {3, 0, 0, kTag}, {2, 1, 0, kTag}, {2, 0, 1, kTag},
		{2, 0, 0, ImmutableString("other")}};
	TempBufferPool pool;
	for (Key const& key : keys)
	{
		EXPECT_FALSE(pool.GetStackAudioBuffer(key.mChannels, key.mDepth, key.mInstance, key.mTag));
		pool.ReserveStackAudioBuffer(key.mChannels, 16, key.mDepth, key.mInstance, key.mTag);
	}
	for (Key const& a : keys)
	{
		auto const buffer = pool.GetStackAudioBuffer(a.mChannels, a.mDepth, a.mInstance, a.mTag);
		ASSERT_TRUE(buffer);
		EXPECT_EQ(buffer->mBuffer.GetNumChannels(), a.mChannels);
		for (Key const& b : keys)
		{
			EXPECT_EQ(
				buffer == pool.GetStackAudioBuffer(b.mChannels, b.mDepth, b.mInstance, b.mTag), &a == &b);
		}
	}
}

TEST(TempBufferPool, ABufferArrivesSilentWithTheLengthThatItsLastUserLeft)
{
	TempBufferPool pool;
	pool.ReserveStackAudioBuffer(2, 64, 0, 0, kTag);
	{
		ScopedStackAudioBuffer const scoped(pool.GetStackAudioBuffer(2, 0, 0, kTag));
		EXPECT_TRUE(pool.GetStackAudioBuffer(2, 0, 0, kTag)->mInUse);
		scoped.GetBuffer().SetUseSize(10);
		scoped.GetBuffer().GetChannel(1)[0] = 1.0f;
		scoped.GetBuffer().ClearSilenceFlags(dsp::SilenceFlags::All());
	}
	auto const again = pool.GetStackAudioBuffer(2, 0, 0, kTag);
	EXPECT_FALSE(again->mInUse);
#ifdef ZORV_POISON_SILENCE
	EXPECT_TRUE(std::isnan(again->mBuffer.GetChannel(1)[0])) << "what the last user left";
	EXPECT_TRUE(std::isnan(again->mBuffer.GetChannel(1)[63])) << "what nobody has used";
#endif
	EXPECT_TRUE(again->mBuffer.IsSilent());
	EXPECT_EQ(again->mBuffer.GetUseSize(), 10u);
}

TEST(TempBufferPool, AnUnreservedBufferIsMissedAtItsFirstUse)
{
	TempBufferPool pool;
	ScopedStackAudioBuffer const scoped(pool.GetStackAudioBuffer(2, 0, 0, kTag));
	EXPECT_THROW(scoped.GetBuffer(), zorvcore::config::zorv_exception);
}

} // namespace SN::TempBufferPoolTest
