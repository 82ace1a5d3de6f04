#include "zorvaudiofilters/ambisonics/binauralizer/HRIR.h"

#include <boost/make_shared.hpp>

#include <array>
#include <cstddef>

namespace zorvaudiofilters::ambisonics::binauralizer
{

namespace
{

constexpr unsigned kNumComponents = 4;
constexpr dsp::ambi::FieldGains kGains[kNumComponents] = {
	{1.0f, 0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 0.0f, 1.0f}};
constexpr dsp::ambi::ResponseSet kSets[] = {{44100, 128}, {48000, 128}, {88200, 256}, {96000, 256}};
constexpr dsp::ambi::ResponseDescriptor kDescriptor{kNumComponents, kGains, std::size(kSets), kSets};

constexpr std::size_t CountTaps()
{
	std::size_t count = 0;
	for (auto const& set : kSets)
	{
		count += kNumComponents * std::size_t{set.mNumTaps};
	}
	return count;
}

using Table = std::array<float, CountTaps()>;

constexpr Table kLeft{
#include "HRIRTable.inc"
};

// What comes from the left is heard on the right as its mirror image is on the left: Y, the second component, changes
// its sign.
constexpr Table MirrorLeft()
{
	Table right = kLeft;
	std::size_t first = 0;
	for (auto const& set : kSets)
	{
		for (std::size_t tap = 0; tap < set.mNumTaps; ++tap)
		{
			right[first + set.mNumTaps + tap] = -kLeft[first + set.mNumTaps + tap];
		}
		first += kNumComponents * std::size_t{set.mNumTaps};
	}
	return right;
}

constexpr Table kRight = MirrorLeft();

} // namespace

dsp::ambi::ResponseDescriptor const& HRIR::GetDescriptor() const
{
	return kDescriptor;
}

float const* HRIR::GetLeftData() const
{
	return kLeft.data();
}

float const* HRIR::GetRightData() const
{
	return kRight.data();
}

boost::shared_ptr<HRIR> GetDefaultHRIR()
{
	static auto const sDefault = boost::make_shared<HRIR>();
	return sDefault;
}

} // namespace zorvaudiofilters::ambisonics::binauralizer
