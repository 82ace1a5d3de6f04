#include "Sonaro/GraphFactory.h"
#include "Support/Buffers.h"
#include "Support/Common.h"
#include "Support/RealtimeGuard.h"

namespace SN::AudioBinauralizerRealtimeTest
{

using namespace Testing;

TEST(AudioBinauralizerRealtime, TurnsAndMixesWithoutAllocations)
{
	for (unsigned const channels : {2u, 6u})
	{
		auto const binauralizer = GraphFactory().CreateAudioBinauralizer({.mOutputChannels = channels});
		auto const process = binauralizer->GetProcessFunction(4, channels);
		auto field = MakeBuffer(4, 512, 0.1f);
		dsp::AudioBuffer output(channels, 512);
		int calls = 0;
		{
			RealtimeGuard const guard;
			for (unsigned block = 0; block < 100; ++block)
			{
				field.SetUseSize(1 + block * 37 % 512);
				binauralizer->SetOrientation(0.0f, static_cast<float>(block / 2), 3.0f);
				binauralizer->SetBypass(block % 10 == 9);
				process(field, output);
			}
			binauralizer->Reset();
			calls = guard.GetAllocations() + guard.GetLocks();
		}
		EXPECT_EQ(calls, 0);
		EXPECT_NE(output.GetChannel(0)[0], 0.0f);
	}
}

} // namespace SN::AudioBinauralizerRealtimeTest
