#include "Panner/Algorithm/LowFrequencyFilter.h"

#include "Vexilon/Constants.h"
#include "zorvaccelerate/ChannelMixing.h"
#include "zorvcore/math/Elementary.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace SN
{

namespace
{

constexpr double kCutOffHertz = 120.0;

} // namespace

void LowFrequencyFilter::Init(FrameRate const& inFrameRate)
{
	std::int64_t const ticks = inFrameRate.GetTicksPerFrame();
	double const rate =
		ticks == std::numeric_limits<std::int64_t>::max() ? 0.0 : 254016000000.0 / static_cast<double>(ticks);
	double const turns = kCutOffHertz / rate;
	auto const w = static_cast<float>((turns + turns) * static_cast<double>(VX::kPi));
	auto const alpha = static_cast<float>(zorvcore::math::Sin(static_cast<double>(w)) * VX::kSqrt2Over264);

	*this = LowFrequencyFilter();
	mA2 = (1.0f - alpha) / (alpha + 1.0f);
	mA1 = static_cast<float>((static_cast<double>(mA2) + 1.0) * zorvcore::math::Cos(static_cast<double>(w)));
	mB = (mA2 + 1.0f - mA1) * 0.25f;
}

void LowFrequencyFilter::CopyCoefficientsFrom(LowFrequencyFilter const& inOther)
{
	*this = LowFrequencyFilter();
	mA1 = inOther.mA1;
	mA2 = inOther.mA2;
	mB = inOther.mB;
}

void LowFrequencyFilter::Process(unsigned inFrames, LowFrequencyFeed const& inFeed, float* outOutput)
{
	zorvaccelerate::utility::FilterFeed feed{
		inFeed.mFirst, inFeed.mSecond, inFeed.mFirstGain, inFeed.mSecondGain, mX1, mX2};
	zorvaccelerate::utility::FeedFilter(inFrames, feed, mB, outOutput);
	mX1 = feed.mX1;
	mX2 = feed.mX2;

	float y1 = mY1;
	float y2 = mY2;
	for (unsigned i = 0; i < inFrames; ++i)
	{
		float const y = outOutput[i] + y1 * mA1 - mA2 * y2;
		y2 = y1;
		y1 = y;
		outOutput[i] = y;
	}
	mY1 = y1;
	mY2 = y2;
}

} // namespace SN
