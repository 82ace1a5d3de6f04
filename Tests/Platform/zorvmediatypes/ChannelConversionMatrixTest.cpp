#include "zorvmediatypes/ChannelConversionMatrix.h"

#include "Support/Common.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace zorvmediatypes::ChannelConversionMatrixTest
{

using enum AudioChannelDescription;

// -3 dB and -6 dB.
double const h = std::sqrt(0.5);
constexpr double q = 0.5;

TEST(ChannelConversionMatrix, SendsEachChannelToWhereItIsHeardBest)
{
	struct Case
	{
		char const* mName;
		AudioChannelLayout mInput;
		AudioChannelLayout mOutput;
		ChannelConversionMatrix mExpected;
	};
	AudioChannelLayout const mono = CreateMonoChannelLayout();
	AudioChannelLayout const stereo = CreateStereoChannelLayout();
	AudioChannelLayout const surround = Create51ChannelLayout();
	AudioChannelLayout const quad{kLeft, kRight, kLeftSurround, kRightSurround};
	Case const cases[] = {
		{"stereo to itself", stereo, stereo, {{1, 0}, {0, 1}}},
		{"the same place twice, to itself", {kLeft, kLeft}, {kLeft, kLeft}, {{1, 0}, {0, 1}}},
		{"left and right change places", stereo, {kRight, kLeft}, {{0, 1}, {1, 0}}},
		{"mono is heard from the centre", mono, surround, {{0}, {0}, {1}, {0}, {0}, {0}}},
		{"mono is heard from both sides", mono, stereo, {{h}, {h}}},
		{"stereo stands in front", stereo, surround, {{1, 0}, {0, 1}, {0, 0}, {0, 0}, {0, 0}, {0, 0}}},
		{"5.1 to stereo", surround, stereo, {{1, 0, h, 0, h, 0}, {0, 1, h, 0, 0, h}}},
		{"5.1 to mono", surround, mono, {{h, h, 1, 0, q, q}}},
		{"5.1 without centre", surround, quad,
			{{1, 0, h, 0, 0, 0}, {0, 1, h, 0, 0, 0}, {0, 0, 0, 0, 1, 0}, {0, 0, 0, 0, 0, 1}}},
		{"low frequencies keep their channel", surround, {kLowFrequency}, {{0, 0, 0, 1, 0, 0}}},
		{"adaptive, by position", CreateMultichannelLayout(3), stereo, {{1, 0, 0}, {0, 1, 0}}},
		{"to adaptive, by position", surround, CreateMultichannelLayout(2),
			{{1, 0, 0, 0, 0, 0}, {0, 1, 0, 0, 0, 0}}},
		{"an unknown place, by position", {kUnknown, kRight}, {kRight, kLeft}, {{1, 0}, {0, 1}}},
		{"no inputs", {}, stereo, {{}, {}}},
		{"no outputs", stereo, {}, {}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		ChannelConversionMatrix matrix{{7.0}};
		ComputeChannelConversionMatrix(test.mInput, test.mOutput, matrix);
		ASSERT_EQ(matrix.size(), test.mExpected.size());
		for (std::size_t row = 0; row < matrix.size(); ++row)
		{
			ASSERT_EQ(matrix[row].size(), test.mExpected[row].size());
			for (std::size_t column = 0; column < matrix[row].size(); ++column)
			{
				EXPECT_NEAR(matrix[row][column], test.mExpected[row][column], 1e-15)
					<< "output " << row << ", input " << column;
			}
		}
	}
}

} // namespace zorvmediatypes::ChannelConversionMatrixTest
