#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Metering/LoudnessMeterSetter.h"
#include "Support/RealtimeGuard.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

namespace SonaroHost::Testing::LoudnessMeterRealtimeTest
{

TEST(LoudnessMeterSetter, MeasuringNeitherAllocatesNorLocks)
{
	auto const meter = zorvcore::classref::MakeObject<LoudnessMeterSetter>(ParseLayout("5.1").value());
	meter->Init(SN::FrameRate::FromSamplesPerSecond(48000), 6);
	dsp::AudioBuffer block(6, 4096);
	for (unsigned i = 0; i < 4096; ++i)
	{
		block.GetChannel(i % 6)[i] = 0.25f;
	}
	{
		SN::Testing::RealtimeGuard const guard;
		for (int run = 0; run < 3; ++run)
		{
			for (int i = 0; i < 50; ++i)
			{
				meter->SetMeterData(block, SN::kTimeZero);
			}
			meter->Reset();
		}
		EXPECT_EQ(guard.GetAllocations(), 0);
		EXPECT_EQ(guard.GetLocks(), 0);
	}
	meter->SetMeterData(block, SN::kTimeZero);
	EXPECT_EQ(meter->GetReading().mPeak, 0.0) << "two runs have used up what was made beforehand";
	meter->SetMeterData(block, SN::kTimeZero);
	EXPECT_EQ(meter->GetReading().mPeak, 0.25);
}

} // namespace SonaroHost::Testing::LoudnessMeterRealtimeTest
