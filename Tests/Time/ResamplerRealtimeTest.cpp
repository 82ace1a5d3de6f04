#include "ResamplerRuns.h"
#include "Support/Engine.h"
#include "Support/RealtimeGuard.h"

namespace SN::ResamplerRealtimeTest
{

TEST(ResamplerRealtime, ConvertsWithoutAllocationsAndLocks)
{
	for (ResamplerKind const kind : kAllResamplers)
	{
		for (double const ratio : {0.5, 1.0, 48000.0 / 44100.0, 3.7})
		{
			SCOPED_TRACE(std::string(GetName(kind)) + ", ratio " + std::to_string(ratio));
			auto const resampler = MakeResampler(kind, RatePair(ratio), 2);
			dsp::AudioBuffer input(2, 16384);
			std::fill_n(input.GetChannel(0), 16384, 0.5f);
			dsp::AudioBuffer output(2, 700);
			int allocations = 0;
			int locks = 0;
			{
				RealtimeGuard const guard;
				for (unsigned block = 0; block < 20; ++block)
				{
					unsigned const numOutput = 100 + 30 * block;
					unsigned const numInput = resampler->GetInputSampleCount(numOutput);
					input.SetChannelZero(1, block % 3 == 0);
					resampler->Process(input, output, numInput, numOutput);
				}
				resampler->Reset();
				allocations = guard.GetAllocations();
				locks = guard.GetLocks();
			}
			EXPECT_EQ(allocations, 0);
			EXPECT_EQ(locks, 0);
			EXPECT_NEAR(output.GetChannel(0)[600], 0.5f, 0.02f);
		}
	}
}

} // namespace SN::ResamplerRealtimeTest
