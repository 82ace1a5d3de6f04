#include "zorvmediatypes/ChannelConversionMatrix.h"

#include "Support/Common.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace zorvmediatypes::ChannelConversionMatrixTest
{

using enum AudioChannelDescription;

// -3 dB and -6 dB.
double const h = std::sqrt(0.5);
constexpr double q = 0.5;
// Cosines and sines of the angles of loudspeakers.
double const c30 = std::sqrt(0.75);
constexpr double s110 = 0.93969262078590838405;
constexpr double c110 = -0.34202014332566873304;

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
	AudioChannelLayout const field = CreateAmbisonic1ChannelLayout();
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
		{"7.1 to 5.1", Create71ChannelLayout(), surround,
			{{1, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 0, 0, 0, 0, 0, 0}, {0, 0, 1, 0, 0, 0, 0, 0},
				{0, 0, 0, 1, 0, 0, 0, 0}, {0, 0, 0, 0, 1, 0, 1, 0}, {0, 0, 0, 0, 0, 1, 0, 1}}},
		{"mono comes from the front", mono, field, {{1}, {0}, {0}, {1}}},
		{"stereo comes from 30 degrees", stereo, field, {{1, 1}, {0.5, -0.5}, {0, 0}, {c30, c30}}},
		{"5.1 to a sound field", surround, field,
			{{1, 1, 1, 1, 1, 1}, {0.5, -0.5, 0, 0, s110, -s110}, {0, 0, 0, 0, 0, 0},
				{c30, c30, 1, 0, c110, c110}}},
		{"7.1 to a sound field", Create71ChannelLayout(), field,
			{{1, 1, 1, 1, 1, 1, 1, 1}, {0.5, -0.5, 0, 0, h, -h, 1, -1}, {0, 0, 0, 0, 0, 0, 0, 0},
				{c30, c30, 1, 0, -h, -h, 0, 0}}},
		{"a sound field to mono", field, mono, {{1, 0, 0, 0}}},
		{"a sound field to stereo", field, stereo, {{q, q, 0, 0}, {q, -q, 0, 0}}},
		{"a sound field to four places", field, quad,
			{{q / 2, q / 4, 0, c30 / 4}, {q / 2, -q / 4, 0, c30 / 4}, {q / 2, s110 / 4, 0, c110 / 4},
				{q / 2, -s110 / 4, 0, c110 / 4}}},
		{"a sound field to adaptive, by position", field, CreateMultichannelLayout(2),
			{{1, 0, 0, 0}, {0, 1, 0, 0}}},
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
