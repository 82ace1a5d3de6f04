#include "AudioRender/Core/ParameterOwnerMixin.h"

#include "Support/Engine.h"

namespace SN::ParameterOwnerMixinTest
{

// A node that has nothing but parameters.
class Owner final : public ParameterOwnerMixin
{
public:
	using ParameterOwnerMixin::CopyFrom;
	using ParameterOwnerMixin::GetParameter;
	using ParameterOwnerMixin::GetParameterCount;
	using ParameterOwnerMixin::GetValue;
	using ParameterOwnerMixin::IsBypassConstant;
	using ParameterOwnerMixin::IsBypassed;
	using ParameterOwnerMixin::Preroll;
	using ParameterOwnerMixin::Reset;

	void UpdateControls(TickTime const& inTime) override
	{
		++mSamplings;
		ParameterOwnerMixin::UpdateControls(inTime);
	}

	int mSamplings = 0;
};

struct Fixture
{
	explicit Fixture(Prefetcher* inPrefetcher = nullptr)
		: mContext(256, inPrefetcher)
	{
	}

	InterfaceRef<FakeParameter> Add(float inValue)
	{
		mFakes.push_back(MakeObject<FakeParameter>(inValue));
		mParams.push_back(mFakes.back());
		return mFakes.back();
	}
	InterfaceRef<Owner> Make(unsigned long long inBypassIndex = ParameterOwnerMixin::kNoBypass)
	{
		auto const owner = MakeObject<Owner>();
		EXPECT_EQ(owner->Init(mParams,
					  {.mFrameRate = k48000Hz,
						  .mBypassIndex = inBypassIndex,
						  .mParamInitFlag = true,
						  .mActionFlag = true},
					  mContext.Get()),
			kSuccess);
		return owner;
	}

	ScopedContext mContext;
	ParameterOwnerMixin::Parameters mParams;
	std::vector<InterfaceRef<FakeParameter>> mFakes;
};

TEST(ParameterOwnerMixin, ValuesStandBesideTheBypass)
{
	struct Case
	{
		char const* mName;
		unsigned long long mBypassIndex;
		bool mBypassed;
		// What GetValue of 0 to 2 reads.
		std::vector<float> mValues;
	};
	Case const cases[] = {
		{"no bypass", ParameterOwnerMixin::kNoBypass, false, {10.0f, 20.0f, 30.0f}},
		{"the bypass first", 0, true, {20.0f, 20.0f, 30.0f}},
		{"the bypass in the middle", 1, true, {10.0f, 30.0f, 30.0f}},
		{"the bypass last", 2, true, {10.0f, 20.0f, 0.0f}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		Fixture fixture;
		for (float const value : {10.0f, 20.0f, 30.0f})
		{
			fixture.Add(value);
		}
		auto const owner = fixture.Make(test.mBypassIndex);
		EXPECT_FALSE(owner->IsBypassed());
		EXPECT_EQ(owner->GetValue(0), 0.0f);
		owner->UpdateControls(kTimeZero);
		EXPECT_EQ(owner->IsBypassed(), test.mBypassed);
		for (unsigned i = 0; i < 3; ++i)
		{
			EXPECT_EQ(owner->GetValue(i), test.mValues[i]) << i;
		}
	}
}

TEST(ParameterOwnerMixin, TheEarliestParameterDecidesAndEachHasItsOwnCache)
{
	Fixture fixture;
	EXPECT_EQ(fixture.Make()->GetNextInterestingTime(kTimeZero), kTimeMax);

	Prefetcher prefetcher;
	Fixture live(&prefetcher);
	for (long long const next : {30, 10, 20})
	{
		live.Add(1.0f)->mNext = TickTime(next, k48000Hz);
	}
	auto const owner = live.Make(1);
	EXPECT_EQ(owner->GetNextInterestingTime(kTimeZero), TickTime(10, k48000Hz));
	std::set<VX::KeyframeCacheBase*> caches;
	for (auto const& fake : live.mFakes)
	{
		caches.insert(fake->mLastCache);
	}
	EXPECT_EQ(caches.size(), 3u);
	owner->UpdateControls(kTimeZero);
	for (auto const& fake : live.mFakes)
	{
		EXPECT_TRUE(caches.count(fake->mLastCache)) << "sampling uses the cache of the question before";
	}
}

TEST(ParameterOwnerMixin, PlaybackAtTheTopSharesAndAllElseDetachesOncePerContext)
{
	Prefetcher prefetcher;
	Fixture live(&prefetcher);
	auto const shared = live.Add(1.0f);
	auto const owner = live.Make();
	EXPECT_EQ(owner->GetParameter(0), shared);
	shared->mValueAt = [](TickTime const&) { return 2.0f; };
	owner->UpdateControls(kTimeZero);
	EXPECT_EQ(owner->GetValue(0), 2.0f) << "an edit is heard";
	EXPECT_THAT(*shared->mLog, ElementsAre("init 16 5292000 flag"));

	live.mContext->PushNestingLevel();
	auto const nested = live.Make();
	live.mContext->PopNestingLevel();
	EXPECT_NE(nested->GetParameter(0), shared) << "a nested sequence is detached";

	Fixture exported;
	auto const param = exported.Add(1.0f);
	auto const first = exported.Make();
	auto const second = exported.Make();
	EXPECT_NE(first->GetParameter(0), param);
	EXPECT_EQ(first->GetParameter(0), second->GetParameter(0)) << "two nodes share one clone";
	EXPECT_THAT(*param->mLog, ElementsAre("detach", "init 16 5292000 flag", "init 16 5292000 flag"));
	param->mValueAt = [](TickTime const&) { return 2.0f; };
	first->UpdateControls(kTimeZero);
	EXPECT_EQ(first->GetValue(0), 1.0f) << "an edit is not heard";
}

TEST(ParameterOwnerMixin, AnEmptyParameterEndsTheWalk)
{
	Fixture exported;
	exported.Add(1.0f);
	exported.mParams.push_back({});
	auto const later = exported.Add(3.0f);
	EXPECT_EQ(exported.Make()->GetParameterCount(), 1u);
	EXPECT_TRUE(later->mLog->empty());

	Prefetcher prefetcher;
	Fixture live(&prefetcher);
	live.mParams.push_back({});
	auto const owner = live.Make();
	LiveAudioParameterMap map;
	EXPECT_THROW(owner->UpdateControls(kTimeZero), zorvcore::config::NullPtrException);
	EXPECT_THROW(owner->GetNextInterestingTime(kTimeZero), zorvcore::config::NullPtrException);
	EXPECT_THROW(owner->CollectLiveParameters(map), zorvcore::config::NullPtrException);
	EXPECT_THROW(owner->Preroll(kTimeZero), zorvcore::config::NullPtrException);
	EXPECT_THROW(owner->Reset(), zorvcore::config::NullPtrException);
	EXPECT_THROW(MakeObject<Owner>()->Init({}, {}, {}), zorvcore::config::NullPtrException);
}

TEST(ParameterOwnerMixin, CopiesShareOrDetachAndMustBeSampledAnew)
{
	Fixture fixture;
	auto const param = fixture.Add(1.0f);
	param->mValueAt = [log = param->mLog](TickTime const&)
	{
		log->push_back("sample");
		return 1.0f;
	};
	fixture.Add(1.0f);
	auto const owner = fixture.Make(1);
	owner->Preroll(kTimeZero);
	EXPECT_EQ(owner->GetValue(0), 1.0f) << "a preroll samples";
	EXPECT_THAT(*param->mLog, ElementsAre("detach", "init 16 5292000 flag", "preroll", "sample"));
	EXPECT_EQ(owner->mSamplings, 1) << "in the way of the node";
	param->mLog->clear();

	auto const sharing = MakeObject<Owner>();
	sharing->CopyFrom(*owner, false, k44100Hz, 64);
	EXPECT_EQ(sharing->GetParameter(0), owner->GetParameter(0));
	EXPECT_TRUE(param->mLog->empty());
	auto const detached = MakeObject<Owner>();
	detached->CopyFrom(*owner, true, k44100Hz, 64);
	EXPECT_NE(detached->GetParameter(0), owner->GetParameter(0));
	EXPECT_THAT(*param->mLog, ElementsAre("clone", "init 64 5760000"));
	for (auto const& copy : {sharing, detached})
	{
		EXPECT_EQ(copy->GetValue(0), 0.0f);
		EXPECT_FALSE(copy->IsBypassed());
		copy->UpdateControls(kTimeZero);
		EXPECT_EQ(copy->GetValue(0), 1.0f);
		EXPECT_TRUE(copy->IsBypassed());
		copy->Reset();
		EXPECT_EQ(copy->GetValue(0), 1.0f) << "what was sampled stays";
		EXPECT_TRUE(copy->IsBypassed());
	}
	EXPECT_EQ(param->mLog->back(), "reset");
}

TEST(ParameterOwnerMixin, APendingParameterIsCollectedOnceUnderItsFirstOwner)
{
	Prefetcher prefetcher;
	Fixture live(&prefetcher);
	auto const pending = live.Add(1.0f);
	live.Add(2.0f);
	pending->mIsPending = true;
	auto const first = live.Make();
	auto const second = MakeObject<Owner>();
	second->Init(live.mParams, {.mFrameRate = k48000Hz, .mActionFlag = false}, live.mContext.Get());

	LiveAudioParameterMap map;
	first->CollectLiveParameters(map);
	second->CollectLiveParameters(map);
	ASSERT_EQ(map.size(), 1u);
	EXPECT_EQ(map.begin()->first, pending.GetUnknown().get());
	EXPECT_EQ(map.begin()->second.mParameter, pending);
	EXPECT_TRUE(map.begin()->second.mActionFlag);

	LiveAudioParameterMap ofCopy;
	auto const copy = MakeObject<Owner>();
	copy->CopyFrom(*first, false, k48000Hz, 16);
	copy->CollectLiveParameters(ofCopy);
	EXPECT_TRUE(ofCopy.begin()->second.mActionFlag);
}

TEST(ParameterOwnerMixin, ABypassIsConstantWhenItIsOnAndNeverChanges)
{
	for (bool const isOn : {false, true})
	{
		for (TickTime const& next : {kTimeMax, TickTime(100, k48000Hz)})
		{
			Prefetcher prefetcher;
			Fixture live(&prefetcher);
			live.Add(isOn ? 1.0f : 0.0f)->mNext = next;
			EXPECT_EQ(live.Make(0)->IsBypassConstant(), isOn && next == kTimeMax);
		}
	}
}

} // namespace SN::ParameterOwnerMixinTest
