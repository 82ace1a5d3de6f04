#include "SonaroHost/Automation/AutomationParameter.h"

#include "SonaroHost/Base/HostError.h"
#include "Support/Threads.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace SonaroHost::Testing::AutomationParameterTest
{

using FloatCache = VX::KeyframeCache<VX::Keyframe<float>>;
using FloatParameter = SN::InterfaceRef<AutomationParameter<float>>;

template <class T>
T Sample(SN::IRenderableAudioComponentParam& ioParameter, SN::TickTime const& inTime,
	VX::KeyframeCacheBase* ioCache = nullptr)
{
	VX::Keyframe<T> keyframe;
	ioParameter.UpdateControl(inTime, ioCache, &keyframe);
	EXPECT_EQ(keyframe.mTime, inTime);
	return keyframe.mValue;
}

SN::TickTime Seconds(double inSeconds)
{
	return SN::TickTime::FromSeconds(inSeconds);
}

AutomationParameter<float>::Curve MakeCurve(std::vector<AutomationPoint> const& inPoints)
{
	return std::make_shared<AutomationCurve const>(inPoints);
}

boost::shared_ptr<VX::ParamValue<float>> MakeControl(float inValue)
{
	return boost::shared_ptr<VX::ParamValue<float>>(new VX::ParamValue<float>(inValue));
}

TEST(AutomationParameter, EachEditIsHeardByTheNextSampling)
{
	auto const control = MakeControl(0.25f);
	auto const parameter = zorvcore::classref::MakeObject<AutomationParameter<float>>(control);
	// It lasts over all edits, as the cache of a node does.
	FloatCache cache;
	auto const sample = [&](double inSeconds)
	{
		float const value = Sample<float>(*parameter, Seconds(inSeconds), &cache);
		EXPECT_FALSE(parameter->HasActionPending());
		return value;
	};
	EXPECT_FALSE(parameter->HasActionPending());
	EXPECT_TRUE(parameter->IsEmpty());
	EXPECT_EQ(sample(1.0), 0.25f);

	control->SetValue(0.5f);
	EXPECT_TRUE(parameter->HasActionPending());
	EXPECT_EQ(sample(1.0), 0.5f);
	EXPECT_EQ(parameter->GetNextInterestingTime(Seconds(1.0), &cache), SN::kTimeMax);

	parameter->SetCurve(MakeCurve({{Seconds(0), 1.0}, {Seconds(4), 3.0}}));
	EXPECT_TRUE(parameter->HasActionPending());
	EXPECT_FALSE(parameter->IsEmpty());
	EXPECT_EQ(sample(1.0), 1.5f);
	EXPECT_EQ(parameter->GetNextInterestingTime(Seconds(1.0), &cache), Seconds(1.0));

	// The control is not heard under a curve.
	control->SetValue(9.0f);
	EXPECT_FALSE(parameter->HasActionPending());
	parameter->SetCurve(MakeCurve({{Seconds(0), 5.0, Interpolation::kHold}, {Seconds(4), 3.0}}));
	EXPECT_EQ(parameter->GetNextInterestingTime(Seconds(1.0), &cache), Seconds(4.0));
	EXPECT_TRUE(parameter->HasActionPending());
	EXPECT_EQ(sample(1.0), 5.0f);

	auto const other = MakeControl(-2.0f);
	parameter->ReplaceControl(other, false);
	EXPECT_TRUE(parameter->HasActionPending());
	EXPECT_EQ(parameter->GetStartValue(), other);
	EXPECT_EQ(sample(5.0), 3.0f);
	parameter->SetCurve(nullptr);
	EXPECT_EQ(sample(5.0), -2.0f);
}

TEST(AutomationParameter, ACacheNeverChangesWhatIsSampled)
{
	std::mt19937 random(4711);
	AutomationParameter<float> parameter(MakeControl(0.0f));
	std::array<FloatCache, 3> caches;
	caches[1].Init(5);
	caches[2].Init(1);
	for (int edit = 0; edit < 50; ++edit)
	{
		std::vector<AutomationPoint> points;
		for (unsigned i = 0; i <= random() % 6; ++i)
		{
			points.push_back({SN::TickTime::FromTicks(static_cast<std::int64_t>(random() % 40)),
				static_cast<double>(random() % 5), static_cast<Interpolation>(random() % 3)});
		}
		parameter.SetCurve(MakeCurve(points));
		for (int i = 0; i < 100; ++i)
		{
			SN::TickTime const time = SN::TickTime::FromTicks(static_cast<std::int64_t>(random() % 50) - 5);
			float const expected = Sample<float>(parameter, time);
			SN::TickTime const next = parameter.GetNextInterestingTime(time, nullptr);
			for (FloatCache& cache : caches)
			{
				EXPECT_EQ(Sample<float>(parameter, time, &cache), expected);
				EXPECT_EQ(parameter.GetNextInterestingTime(time, &cache), next);
			}
		}
	}
}

TEST(AutomationParameter, EditsDoNotReachAClone)
{
	auto const control = MakeControl(0.25f);
	auto const parameter = zorvcore::classref::MakeObject<AutomationParameter<float>>(control);
	auto const still = parameter->CloneAndDetach(true);
	parameter->SetCurve(MakeCurve({{Seconds(0), 1.0}, {Seconds(4), 3.0}}));
	auto const moving = parameter->CloneAndDetach(false);
	EXPECT_FALSE(moving->HasActionPending());
	control->SetValue(0.5f);
	parameter->SetCurve(MakeCurve({{Seconds(0), 7.0}}));

	EXPECT_EQ(Sample<float>(*still, Seconds(1)), 0.25f);
	EXPECT_EQ(Sample<float>(*moving, Seconds(1)), 1.5f);
	EXPECT_EQ(Sample<float>(*parameter, Seconds(1)), 7.0f);
	EXPECT_FALSE(still->HasActionPending());
	EXPECT_FALSE(moving->HasActionPending());
	boost::dynamic_pointer_cast<VX::ParamValue<float>>(still->GetStartValue())->SetValue(9.0f);
	EXPECT_EQ(control->GetValue(), 0.5f);
}

TEST(AutomationParameter, ASwitchFlipsAtItsTimeExactly)
{
	auto const parameter = AutomationParameter<bool>::Create(true);
	VX::KeyframeCache<VX::Keyframe<bool>> cache;
	EXPECT_TRUE(Sample<bool>(*parameter, Seconds(0), &cache));
	constexpr auto kHold = Interpolation::kHold;
	parameter->SetCurve(
		MakeCurve({{Seconds(1), 0.0, kHold}, {Seconds(2), 1.0, kHold}, {Seconds(3), 0.0, kHold}}));
	SN::TickTime const tick = SN::TickTime::FromTicks(1);
	for (int pass = 0; pass < 2; ++pass)
	{
		EXPECT_FALSE(Sample<bool>(*parameter, Seconds(0), &cache));
		EXPECT_FALSE(Sample<bool>(*parameter, Seconds(2) - tick, &cache));
		EXPECT_TRUE(Sample<bool>(*parameter, Seconds(2), &cache));
		EXPECT_TRUE(Sample<bool>(*parameter, Seconds(3) - tick, &cache));
		EXPECT_FALSE(Sample<bool>(*parameter, Seconds(3), &cache));
	}
	EXPECT_EQ(parameter->GetNextInterestingTime(Seconds(0), &cache), Seconds(2));
	EXPECT_EQ(parameter->GetNextInterestingTime(Seconds(2), &cache), Seconds(3));
	EXPECT_EQ(parameter->GetNextInterestingTime(Seconds(3), &cache), SN::kTimeMax);
}

TEST(AutomationParameter, RefusedEditsChangeNothing)
{
	auto const number = AutomationParameter<float>::Create(0.5f);
	auto const aSwitch = AutomationParameter<bool>::Create(true);
	EXPECT_THROW(number->ReplaceControl(nullptr, false), HostError);
	EXPECT_THROW(number->ReplaceControl(aSwitch->GetStartValue(), false), HostError);
	EXPECT_THROW(aSwitch->ReplaceControl(number->GetStartValue(), false), HostError);
	EXPECT_THROW(aSwitch->SetCurve(MakeCurve({{Seconds(0), 0.0}, {Seconds(1), 1.0}})), HostError);
	EXPECT_FALSE(number->HasActionPending() || aSwitch->HasActionPending());
	EXPECT_EQ(Sample<float>(*number, Seconds(0)), 0.5f);
	EXPECT_TRUE(Sample<bool>(*aSwitch, Seconds(0)));
}

// One edit of any kind, telling the value that it gives time 0.
void Edit(AutomationParameter<float>& ioParameter, float inValue)
{
	switch (static_cast<int>(inValue) % 3)
	{
	case 0:
		ioParameter.SetCurve(nullptr);
		ioParameter.ReplaceControl(MakeControl(inValue), false);
		break;
	case 1:
		ioParameter.SetCurve(MakeCurve({{Seconds(0), inValue}, {Seconds(1), inValue + 0.5}}));
		break;
	default:
		ioParameter.SetCurve(MakeCurve({{Seconds(-1), inValue - 1.0}, {Seconds(1), inValue + 1.0}}));
	}
}

TEST(AutomationParameter, ReadersFindWhatWasPublishedWhileAWriterEdits)
{
	constexpr int kEdits = 20000;
	auto const parameter = AutomationParameter<float>::Create(0.0f);
	std::atomic<bool> isDone{false};
	SN::Testing::StartLine begin(3);
	std::array<int, 2> wrong{};
	auto const read = [&](int& outWrong)
	{
		FloatCache cache;
		float last = 0.0f;
		begin.Wait();
		while (!isDone.load())
		{
			VX::Keyframe<float> keyframe;
			parameter->UpdateControl(SN::kTimeZero, &cache, &keyframe);
			parameter->GetNextInterestingTime(SN::kTimeZero, &cache);
			float const value = keyframe.mValue;
			// The values of the edits are whole numbers. While a control is exchanged, the one of three edits
			// before is heard; else the values never go back.
			bool const isPublished = value == static_cast<float>(static_cast<int>(value)) && value <= kEdits;
			outWrong += !isPublished || value + 3.0f < last;
			last = value > last ? value : last;
		}
	};
	std::thread first(read, std::ref(wrong[0]));
	std::thread second(read, std::ref(wrong[1]));
	begin.Wait();
	for (int i = 1; i <= kEdits; ++i)
	{
		Edit(*parameter, static_cast<float>(i));
	}
	isDone = true;
	first.join();
	second.join();
	EXPECT_EQ(wrong[0], 0);
	EXPECT_EQ(wrong[1], 0);
	EXPECT_EQ(Sample<float>(*parameter, SN::kTimeZero), static_cast<float>(kEdits));
}

} // namespace SonaroHost::Testing::AutomationParameterTest
