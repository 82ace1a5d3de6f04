#include "zorvmediatypes/ChannelConversionMatrix.h"

#include "zorvcore/math/Elementary.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace zorvmediatypes
{

namespace
{

using enum AudioChannelDescription;

// The coefficient of ITU-R BS.775 for a channel that is heard from two loudspeakers, or from one that is
// not its own: -3 dB.
constexpr double kHalfPower = 0.70710678118654752440;

// A lone channel is heard from the centre.
AudioChannelDescription GetPlace(AudioChannelDescription inChannel)
{
	return inChannel == kMono ? kCenter : inChannel;
}

bool HasPlaces(AudioChannelLayout const& inLayout)
{
	return std::all_of(inLayout.begin(), inLayout.end(),
		[](AudioChannelDescription inChannel) { return inChannel > kUnknown && inChannel <= kRightBack; });
}

// How much a sound field has of each component, or how much of each is heard.
struct FieldGains
{
	double mW = 0.0;
	double mY = 0.0;
	double mX = 0.0;

	std::vector<double> ToRow() const { return {mW, mY, 0.0, mX}; }
};

// Where a loudspeaker of a layout stands, in degrees to the left of the front.
double FindAzimuth(AudioChannelDescription inPlace, AudioChannelLayout const& inLayout)
{
	bool const hasBack = std::find(inLayout.begin(), inLayout.end(), kLeftBack) != inLayout.end();
	double const surround = hasBack ? 90.0 : 110.0;
	switch (inPlace)
	{
	case kLeft:
		return 30.0;
	case kRight:
		return -30.0;
	case kLeftSurround:
		return surround;
	case kRightSurround:
		return -surround;
	case kLeftBack:
		return 135.0;
	case kRightBack:
		return -135.0;
	default:
		return 0.0;
	}
}

FieldGains GetPlaneWave(double inAzimuth)
{
	double const angle = inAzimuth * (std::numbers::pi / 180.0);
	return {1.0, zorvcore::math::Sin(angle), zorvcore::math::Cos(angle)};
}

void EncodeField(AudioChannelLayout const& inLayout, ChannelConversionMatrix& outMatrix)
{
	for (std::size_t column = 0; column < inLayout.size(); ++column)
	{
		FieldGains const gains = inLayout[column] == kLowFrequency
									 ? FieldGains{1.0}
									 : GetPlaneWave(FindAzimuth(inLayout[column], inLayout));
		std::vector<double> const components = gains.ToRow();
		for (std::size_t row = 0; row < components.size(); ++row)
		{
			outMatrix[row][column] = components[row];
		}
	}
}

void DecodeField(AudioChannelLayout const& inLayout, ChannelConversionMatrix& outMatrix)
{
	constexpr double kAside = 90.0;
	bool const isStereo = inLayout == CreateStereoChannelLayout();
	auto const speakers = static_cast<double>(inLayout.size()) -
						  static_cast<double>(std::count(inLayout.begin(), inLayout.end(), kLowFrequency));
	for (std::size_t row = 0; row < inLayout.size(); ++row)
	{
		if (inLayout[row] == kLowFrequency)
		{
			continue;
		}
		double const azimuth = FindAzimuth(inLayout[row], inLayout);
		FieldGains gains = GetPlaneWave(isStereo ? std::copysign(kAside, azimuth) : azimuth);
		gains = inLayout.size() == 1 ? FieldGains{1.0}
									 : FieldGains{1.0 / speakers, gains.mY / speakers, gains.mX / speakers};
		// What is no more than a rounding of 0 is not heard.
		gains.mX = isStereo ? 0.0 : gains.mX;
		outMatrix[row] = gains.ToRow();
	}
}

// Whether one of the layouts is a sound field and the other one has places; then the matrix is made.
bool ConvertField(AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout,
	ChannelConversionMatrix& outMatrix)
{
	AudioChannelLayout const field = CreateAmbisonic1ChannelLayout();
	if (inOutputLayout == field && HasPlaces(inInputLayout))
	{
		EncodeField(inInputLayout, outMatrix);
		return true;
	}
	if (inInputLayout == field && HasPlaces(inOutputLayout))
	{
		DecodeField(inOutputLayout, outMatrix);
		return true;
	}
	return false;
}

// The column of one input channel.
class Spread
{
public:
	Spread(AudioChannelLayout const& inOutputLayout, std::size_t inColumn, ChannelConversionMatrix& ioMatrix)
		: mOutputLayout(inOutputLayout),
		  mColumn(inColumn),
		  mMatrix(ioMatrix)
	{
	}

	// Sets the gain to every output of that place; false when there is none.
	bool To(AudioChannelDescription inPlace, double inGain)
	{
		bool isThere = false;
		for (std::size_t row = 0; row < mOutputLayout.size(); ++row)
		{
			if (GetPlace(mOutputLayout[row]) == inPlace)
			{
				mMatrix[row][mColumn] = inGain;
				isThere = true;
			}
		}
		return isThere;
	}

	// Sends a channel of inPlace to where it is heard from when it has no loudspeaker of its own.
	void ToSubstitutes(AudioChannelDescription inPlace)
	{
		switch (inPlace)
		{
		case kCenter:
			To(kLeft, kHalfPower);
			To(kRight, kHalfPower);
			break;
		case kLeft:
		case kRight:
			To(kCenter, kHalfPower);
			break;
		case kLeftBack:
		case kRightBack:
			if (To(inPlace == kLeftBack ? kLeftSurround : kRightSurround, 1.0))
			{
				break;
			}
			[[fallthrough]];
		case kLeftSurround:
		case kRightSurround:
			if (!To(inPlace == kLeftSurround || inPlace == kLeftBack ? kLeft : kRight, kHalfPower))
			{
				To(kCenter, 0.5);
			}
			break;
		default:
			break;
		}
	}

private:
	AudioChannelLayout const& mOutputLayout;
	std::size_t mColumn;
	ChannelConversionMatrix& mMatrix;
};

} // namespace

void ComputeChannelConversionMatrix(AudioChannelLayout const& inInputLayout,
	AudioChannelLayout const& inOutputLayout, ChannelConversionMatrix& outMatrix)
{
	outMatrix.assign(inOutputLayout.size(), std::vector<double>(inInputLayout.size(), 0.0));
	if (ConvertField(inInputLayout, inOutputLayout, outMatrix))
	{
		return;
	}
	bool const byPosition =
		inInputLayout == inOutputLayout || !HasPlaces(inInputLayout) || !HasPlaces(inOutputLayout);
	for (std::size_t column = 0; column < inInputLayout.size(); ++column)
	{
		if (byPosition)
		{
			if (column < inOutputLayout.size())
			{
				outMatrix[column][column] = 1.0;
			}
			continue;
		}
		AudioChannelDescription const place = GetPlace(inInputLayout[column]);
		Spread spread(inOutputLayout, column, outMatrix);
		if (!spread.To(place, 1.0))
		{
			spread.ToSubstitutes(place);
		}
	}
}

} // namespace zorvmediatypes
