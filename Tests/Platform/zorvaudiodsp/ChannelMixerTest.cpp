#include "zorvaudiodsp/ChannelMixer.h"

#include <gtest/gtest.h>

#include <array>

namespace dsp
{
namespace
{

constexpr int kFrames = 37;

float Input(unsigned inChannel, int inFrame)
{
	return 0.1f * static_cast<float>(inChannel + 1) + 0.01f * static_cast<float>(inFrame);
}

TEST(ChannelMixer, SumsWhatIsHeardInAscendingOrder)
{
	struct Case
	{
		char const* mName;
		// By input and output.
		std::array<std::array<float, 2>, 3> mGains;
		unsigned long long mSilentInputs;
		unsigned long long mSilentOutputs;
	};
	Case const cases[] = {
		{"all inputs to both", {{{0.3f, 1.0f}, {-0.7f, 1.0f}, {1e-3f, 1.0f}}}, 0b000, 0b00},
		{"an output that nothing reaches", {{{0.0f, 0.5f}, {0.0f, 0.25f}, {0.0f, 0.0f}}}, 0b000, 0b01},
		{"a silent input adds nothing", {{{1.0f, 0.0f}, {1.0f, 0.5f}, {1.0f, 0.0f}}}, 0b010, 0b10},
		{"all inputs silent", {{{1.0f, 1.0f}, {1.0f, 1.0f}, {1.0f, 1.0f}}}, 0b111, 0b11},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		std::array<std::array<float, kFrames>, 3> in{};
		std::array<std::array<float, kFrames>, 2> out{};
		float const* inputs[3];
		float* outputs[2];
		ChannelMixer mixer;
		mixer.ResetParameter(true);
		mixer.ResetParameter(false);
		mixer.SetChannelCount(3, 2);
		for (unsigned i = 0; i < 3; ++i)
		{
			inputs[i] = in[i].data();
			for (int frame = 0; frame < kFrames; ++frame)
			{
				in[i][static_cast<unsigned>(frame)] = Input(i, frame);
			}
			for (unsigned o = 0; o < 2; ++o)
			{
				outputs[o] = out[o].data();
				out[o].fill(-5.0f);
				mixer.SetParameter(static_cast<int>(i + 8 * o), test.mGains[i][o]);
			}
		}
		// Indices outside the matrix change nothing.
		mixer.SetParameter(-1, 9.0f);
		mixer.SetParameter(64, 9.0f);

		SilenceFlags silence;
		ChannelMixer(mixer).Process(inputs, outputs, kFrames, SilenceFlags(test.mSilentInputs), silence);
		for (unsigned o = 0; o < 2; ++o)
		{
			bool const isSilent = (test.mSilentOutputs >> o & 1) != 0;
			ASSERT_EQ(silence.Test(o), isSilent);
			for (int frame = 0; frame < kFrames; ++frame)
			{
				float volatile sum = 0.0f;
				for (unsigned i = 0; i < 3; ++i)
				{
					if ((test.mSilentInputs >> i & 1) == 0 && test.mGains[i][o] != 0.0f)
					{
						float volatile const product = test.mGains[i][o] * Input(i, frame);
						sum = sum + product;
					}
				}
				ASSERT_EQ(out[o][static_cast<unsigned>(frame)], isSilent ? -5.0f : sum) << o << ", " << frame;
			}
		}
		EXPECT_TRUE(silence.Test(2)) << "absent outputs are silent";
	}
}

} // namespace
} // namespace dsp
