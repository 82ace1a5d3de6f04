#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Render/LayoutConversion.h"
#include "Support/RealtimeGuard.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <tuple>

namespace SonaroHost::Testing
{
namespace
{

TEST(LayoutConversion, ConvertingNeitherAllocatesNorLocks)
{
	constexpr std::tuple<char const*, char const*, std::optional<double>> kCases[] = {
		{"mono", "stereo", std::nullopt},
		{"stereo", "5.1", std::nullopt},
		{"5.1", "stereo", std::nullopt},
		{"8", "4", std::nullopt},
		{"stereo", "stereo", std::nullopt},
		{"mono", "stereo", 0.3},
		{"stereo", "stereo", 0.5},
		{"stereo", "5.1", 0.3},
		{"7", "7", 0.3},
	};
	SN::FrameRate const frameRate = SN::FrameRate::FromSamplesPerSecond(48000);
	for (auto const& [input, output, pan] : kCases)
	{
		SCOPED_TRACE(testing::Message() << input << " to " << output);
		RenderContextScope const context(512, SN::kTimeMax, SN::ImmutableString("test"));
		LayoutPlan const plan(ParseLayout(input).value(), {ParseLayout(output), pan, std::nullopt});
		LayoutConversion conversion(plan, context.Get(), frameRate);
		dsp::AudioBuffer block(plan.GetInputLayout().size(), 512);

		SN::Testing::RealtimeGuard const guard;
		conversion.Preroll(SN::kTimeZero, false);
		// In a row, and with a jump.
		for (std::int64_t const position : {0, 512, 1024, 100})
		{
			conversion.Convert(block, SN::TickTime(position, frameRate));
		}
		EXPECT_EQ(guard.GetAllocations(), 0);
		EXPECT_EQ(guard.GetLocks(), 0);
	}
}

} // namespace
} // namespace SonaroHost::Testing
