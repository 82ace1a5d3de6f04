#include "zorvaccelerate/FiniteSamples.h"

#include "GuardedArray.h"
#include "Support/Common.h"
#include "zorvaccelerate/FiniteVariants.h"

#include <cmath>
#include <limits>

namespace zorvaccelerate::utility::FiniteSamplesTest
{

TEST(FiniteSamples, EveryVariantFindsOneThatIsNotFiniteAnywhere)
{
	std::mt19937 random(43);
	constexpr float kLargest = std::numeric_limits<float>::max();
	for (unsigned count = 0; count <= 70; ++count)
	{
		for (FiniteVariant const& variant : RunnableFiniteVariants())
		{
			SCOPED_TRACE(std::to_string(count) + " samples, " + variant.mName);
			GuardedArray input(count, count % 8, random);
			std::fill_n(
				input.Data(), count, count % 2 == 0 ? kLargest : -std::numeric_limits<float>::denorm_min());
			EXPECT_TRUE(variant.mAreFinite(count, input.Data()));
			for (unsigned i = 0; i < count; ++i)
			{
				float const former = std::exchange(input.Data()[i], i % 3 == 0   ? NAN
																	: i % 3 == 1 ? -INFINITY
																				 : INFINITY);
				GuardedArray output(count, (count + 3) % 8, random);
				EXPECT_FALSE(variant.mAreFinite(count, input.Data())) << i;
				EXPECT_FALSE(variant.mCopyAndTest(count, input.Data(), output.Data())) << i;
				EXPECT_TRUE(SameBits(output.Values(), input.Values()));
				EXPECT_TRUE(output.GuardsAreWhole());
				input.Data()[i] = former;
			}
		}
	}
}

} // namespace zorvaccelerate::utility::FiniteSamplesTest
