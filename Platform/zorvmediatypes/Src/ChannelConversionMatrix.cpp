#include "zorvmediatypes/ChannelConversionMatrix.h"

#include <algorithm>
#include <cstddef>

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
		[](AudioChannelDescription inChannel)
		{ return inChannel > kUnknown && inChannel <= kRightSurround; });
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
		case kLeftSurround:
		case kRightSurround:
			if (!To(inPlace == kLeftSurround ? kLeft : kRight, kHalfPower))
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
