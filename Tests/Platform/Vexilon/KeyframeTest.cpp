#include "Vexilon/Keyframe.h"

#include "Support/Common.h"
#include "Vexilon/ParamValue.h"
#include "zorvcore/utility/Hash.h"

namespace VX::KeyframeTest
{

using zorvcore::utility::Guid;
using zorvmediatypes::kTimeMax;
using zorvmediatypes::kTimeZero;
using zorvmediatypes::TickTime;

// Bytes one after the other, in the order that a keyframe is digested in.
class Bytes
{
public:
	template <class T>
	Bytes& Add(T const& inValue)
	{
		auto const* const first = reinterpret_cast<unsigned char const*>(&inValue);
		mBytes.insert(mBytes.end(), first, first + sizeof(inValue));
		return *this;
	}
	Guid Digest() const
	{
		zorvcore::utility::HashValueMixerState state;
		zorvcore::utility::UpdateHashState(state, mBytes.data(), mBytes.size());
		Guid digest;
		zorvcore::utility::GetHashResult(state, digest);
		return digest;
	}

private:
	std::vector<unsigned char> mBytes;
};

TEST(Keyframe, EveryFieldCountsInEqualityAndDigest)
{
	std::function<void(Keyframe<float>&)> const changes[] = {
		[](Keyframe<float>&) {},
		[](Keyframe<float>& ioKey) { ioKey.mValue = 0.5f; },
		[](Keyframe<float>& ioKey) { ioKey.mTime = TickTime::FromTicks(1); },
		[](Keyframe<float>& ioKey) { ioKey.mIncomingKind = 1; },
		[](Keyframe<float>& ioKey) { ioKey.mOutgoingKind = 1; },
		[](Keyframe<float>& ioKey) { ioKey.mIncomingTangent[15] = std::byte(1); },
		[](Keyframe<float>& ioKey) { ioKey.mOutgoingTangent[0] = std::byte(1); },
	};
	std::set<Guid> digests;
	std::vector<boost::shared_ptr<KeyframeBase>> keys;
	for (auto const& change : changes)
	{
		Keyframe<float> key(kTimeZero, 0.25f);
		change(key);
		keys.push_back(key.Clone());
		EXPECT_TRUE(*keys.back() == key);
		EXPECT_EQ(keys.back()->GetHash(), key.GetHash());
		digests.insert(key.GetHash());
	}
	EXPECT_EQ(digests.size(), std::size(changes));
	for (std::size_t i = 1; i < keys.size(); ++i)
	{
		EXPECT_FALSE(*keys[0] == *keys[i]) << "change " << i;
	}
	EXPECT_FALSE(Keyframe<bool>(kTimeZero, false) == Keyframe<float>(kTimeZero, 0.0f));
}

TEST(Keyframe, TheDigestRunsOverTheFieldsInTheirOrder)
{
	char salt[22];
	std::memcpy(salt, "Keyframe::HashKeyFrame", sizeof(salt));
	TickTime const time = TickTime::FromTicks(-5292000);
	Keyframe<float> number(time, -0.75f);
	number.mIncomingKind = 3;
	number.mOutgoingKind = 4;
	number.mOutgoingTangent[2] = std::byte(9);
	EXPECT_EQ(number.GetHash(), Bytes()
									.Add(salt)
									.Add(std::uint32_t(9))
									.Add(-0.75f)
									.Add(std::int64_t(-5292000))
									.Add(std::uint32_t(3))
									.Add(std::uint32_t(4))
									.Add(KeyframeTangent{})
									.Add(number.mOutgoingTangent)
									.Digest());
	Keyframe<bool> const flag(time, true);
	EXPECT_EQ(flag.GetHash(), Bytes()
								  .Add(salt)
								  .Add(std::uint32_t(12))
								  .Add(true)
								  .Add(std::int64_t(-5292000))
								  .Add(std::uint64_t(0))
								  .Add(KeyframeTangent{})
								  .Add(KeyframeTangent{})
								  .Digest());
}

TEST(KeyframeCache, CoversNoTimeUntilItIsFilled)
{
	KeyframeCache<Keyframe<float>> cache;
	EXPECT_EQ(cache.GetCount(), 3u);
	for (TickTime const& time : {-kTimeMax, kTimeZero, kTimeMax})
	{
		EXPECT_FALSE(cache.Contains(time));
	}
	cache[0].mTime = TickTime::FromTicks(10);
	cache[2].mTime = TickTime::FromTicks(20);
	EXPECT_FALSE(cache.Contains(TickTime::FromTicks(9)));
	EXPECT_TRUE(cache.Contains(TickTime::FromTicks(10)));
	EXPECT_TRUE(cache.Contains(TickTime::FromTicks(20)));
	EXPECT_FALSE(cache.Contains(TickTime::FromTicks(21)));

	for (unsigned const count : {5u, 2u, 100u, 0u})
	{
		cache[0].mValue = 1.0f;
		cache.Init(count);
		EXPECT_FALSE(cache.Contains(kTimeZero)) << count;
		EXPECT_EQ(cache[0].mValue, 0.0f);
	}
	cache.Init(1);
	EXPECT_TRUE(cache.Contains(kTimeZero));
	EXPECT_FALSE(cache.Contains(TickTime::FromTicks(1)));
}

TEST(ParamValue, AClonedControlGoesItsOwnWay)
{
	ParamValue<float> gain(0.1f);
	auto const clone = boost::static_pointer_cast<ParamValue<float>>(gain.Clone());
	gain.SetValue(2.0f);
	EXPECT_EQ(clone->GetValue(), 0.1f);
	EXPECT_EQ(clone->GetText(), u"0.1");
	EXPECT_EQ(ParamValue<bool>(true).GetText(), u"on");
}

} // namespace VX::KeyframeTest
