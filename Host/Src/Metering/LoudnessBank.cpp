#include "SonaroHost/Metering/LoudnessBank.h"

#include "MeterLanes.h"
#include "zorvaccelerate/Metering.h"

namespace SonaroHost
{

namespace
{

// The frames that a render hands on at once, where nobody asks for other blocks.
constexpr unsigned kFrames = 4096;

} // namespace

LoudnessBank::LoudnessBank(double inSampleRate)
	: mLanes(std::make_unique<MeterLanes>(inSampleRate, kFrames))
{
	mLanes->Reserve(zorvaccelerate::utility::kFilterLanes);
}

LoudnessBank::~LoudnessBank() = default;

double LoudnessBank::GetSampleRate() const
{
	return mLanes->GetSampleRate();
}

} // namespace SonaroHost
