#include "Support/Engine.h"
#include "Support/RealtimeGuard.h"
#include "Time/Stretch/TimeStretchedAudioGenerator.h"

namespace SN::TimeStretchRealtimeTest
{

// One and a half times as fast for a second, then two thirds.
class Swing final : public Answers<VX::ITimeTransform>
{
public:
	TickTime GetTime(TickTime const& inTime) override
	{
		return inTime < At(48000) ? inTime * 1.5 : At(72000) + (inTime - At(48000)) / 1.5;
	}
};

TEST(TimeStretchRealtime, PlaysOnWithoutAllocations)
{
	for (bool const maintainsPitch : {true, false})
	{
		ScopedContext const context(512);
		auto const source = MakeObject<FakeGenerator>(2,
			[](unsigned long long inChannel, long long inFrame)
			{
				float const decay = std::exp(-0.001f * static_cast<float>(inFrame % 7000));
				return decay * std::sin(static_cast<float>(inFrame % 48000) *
										(0.05f + 0.01f * static_cast<float>(inChannel)));
			});
		source->mRecordsCalls = false;
		InterfaceRef<IAudioGenerator> stretched;
		ASSERT_EQ(
			TimeStretchedAudioGenerator::Create(
				{source, k48000Hz, context, MakeObject<Swing>(), maintainsPitch, At(1000000)}, &stretched),
			kSuccess);
		stretched->Preroll(kTimeZero, false);
		dsp::AudioBuffer buffer(2, 512);
		float loudest = 0.0f;
		int allocations = 0;
		{
			RealtimeGuard const guard;
			long long frame = 0;
			for (unsigned block = 0; block < 300; ++block)
			{
				unsigned const count = 1 + block * 37 % 512;
				buffer.SetUseSize(count);
				stretched->GetAudioData(At(frame), buffer, false);
				loudest = std::max(loudest, std::fabs(buffer.GetChannel(1)[0]));
				frame += count;
			}
			allocations = guard.GetAllocations();
		}
		EXPECT_EQ(allocations, 0);
		EXPECT_GT(loudest, 0.3f);
	}
}

} // namespace SN::TimeStretchRealtimeTest
