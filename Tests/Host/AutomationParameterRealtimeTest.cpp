#include "SonaroHost/Automation/AutomationParameter.h"
#include "Support/RealtimeGuard.h"

#include <gtest/gtest.h>

namespace SonaroHost::Testing::AutomationParameterRealtimeTest
{

TEST(AutomationParameter, SamplingNeitherAllocatesNorLocks)
{
	auto const parameter = AutomationParameter<float>::Create(0.5f);
	VX::KeyframeCache<VX::Keyframe<float>> cache;
	VX::Keyframe<float> keyframe;
	for (int edit = 0; edit < 3; ++edit)
	{
		std::vector<AutomationPoint> points;
		for (int i = 0; i < 10 * edit; ++i)
		{
			points.push_back({SN::TickTime::FromSeconds(i), -i * 3.0, static_cast<Interpolation>(i % 3)});
		}
		parameter->SetCurve(std::make_shared<AutomationCurve const>(points, AutomationScale::kDecibels));

		SN::Testing::RealtimeGuard const guard;
		EXPECT_TRUE(parameter->HasActionPending());
		for (int i = 0; i < 100; ++i)
		{
			SN::TickTime const time = SN::TickTime::FromTicks(i * 37'000'000'000);
			parameter->GetNextInterestingTime(time, &cache);
			parameter->UpdateControl(time, i % 2 ? &cache : nullptr, &keyframe);
			parameter->Preroll(time);
			parameter->Reset();
		}
		EXPECT_EQ(parameter->IsEmpty(), edit == 0);
		EXPECT_FALSE(parameter->HasActionPending());
		EXPECT_EQ(guard.GetAllocations(), 0);
		EXPECT_EQ(guard.GetLocks(), 0);
	}
}

} // namespace SonaroHost::Testing::AutomationParameterRealtimeTest
