#include "zorvaudiodsp/ChannelMixer.h"

#include "Support/Buffers.h"
#include "Support/Common.h"

namespace dsp::ChannelMixerTest
{

constexpr int kFrames = 37;

float Input(unsigned inChannel, int inFrame)
{
	return 0.1f * static_cast<float>(inChannel + 1) + 0.01f * static_cast<float>(inFrame);
}

struct MixerCase
{
	char const* mName;
	// By input and output.
	std::array<std::array<float, 2>, 3> mGains;
	unsigned long long mSilentInputs;
	unsigned long long mSilentOutputs;
};
constexpr MixerCase kMixerCases[] = {
	{"all inputs to both", {{{0.3f, 1.0f}, {-0.7f, 1.0f}, {1e-3f, 1.0f}}}, 0b000, 0b00},
	{"an output that nothing reaches", {{{0.0f, 0.5f}, {0.0f, 0.25f}, {0.0f, 0.0f}}}, 0b000, 0b01},
	{"a silent input adds nothing", {{{1.0f, 0.0f}, {1.0f, 0.5f}, {1.0f, 0.0f}}}, 0b010, 0b10},
	{"all inputs silent", {{{1.0f, 1.0f}, {1.0f, 1.0f}, {1.0f, 1.0f}}}, 0b111, 0b11},
};

// Each step is rounded apart, as nothing is contracted.
float Mixed(MixerCase const& inCase, unsigned inOutput, int inFrame)
{
	float sum = 0.0f;
	for (unsigned i = 0; i < 3; ++i)
	{
		bool const isHeard = (inCase.mSilentInputs >> i & 1) == 0 && inCase.mGains[i][inOutput] != 0.0f;
		sum += isHeard ? inCase.mGains[i][inOutput] * Input(i, inFrame) : 0.0f;
	}
	return sum;
}

TEST(ChannelMixer, SumsWhatIsHeardInAscendingOrder)
{
	for (MixerCase const& test : kMixerCases)
	{
		SCOPED_TRACE(test.mName);
		AudioBuffer in(3, kFrames);
		AudioBuffer out = SN::Testing::MakeBuffer(2, kFrames, -5.0f);
		ChannelMixer mixer;
		mixer.ResetParameter(true);
		mixer.ResetParameter(false);
		mixer.SetChannelCount(3, 2);
		for (unsigned i = 0; i < 3; ++i)
		{
			for (int frame = 0; frame < kFrames; ++frame)
			{
				in.GetChannel(i)[frame] = Input(i, frame);
			}
			for (unsigned o = 0; o < 2; ++o)
			{
				mixer.SetParameter(static_cast<int>(i + 8 * o), test.mGains[i][o]);
			}
		}
		// Indices outside the matrix change nothing.
		mixer.SetParameter(-1, 9.0f);
		mixer.SetParameter(64, 9.0f);

		SilenceFlags silence;
		ChannelMixer(mixer).Process(
			in.GetChannels(), out.GetChannels(), kFrames, SilenceFlags(test.mSilentInputs), silence);
		for (unsigned o = 0; o < 2; ++o)
		{
			bool const isSilent = (test.mSilentOutputs >> o & 1) != 0;
			ASSERT_EQ(silence.Test(o), isSilent);
			for (int frame = 0; frame < kFrames; ++frame)
			{
				ASSERT_EQ(out.GetChannel(o)[frame], isSilent ? -5.0f : Mixed(test, o, frame))
					<< o << ", " << frame;
			}
		}
		EXPECT_TRUE(silence.Test(2)) << "absent outputs are silent";
	}
}

} // namespace dsp::ChannelMixerTest
