#include "PannerReference.h"

#include "Sonaro/AudioChannelMix.h"
#include "Support/Engine.h"

namespace SN::SurroundPannerTest
{

// Two units in the last place of full scale; products of two gains may take a third.
constexpr double kLastPlaces = 3.6e-7;

constexpr unsigned kMeasured[] = {0, 1, 2, 4, 5};

TEST(SurroundPanner, StandsAtTheGainsOfItsLawAllOverTheField)
{
	for (bool const isStereo : {false, true})
	{
		for (double x = 0.0; x <= 1.0; x += 1.0 / 16.0)
		{
			for (double y = 0.0; y <= 1.0; y += 0.125)
			{
				for (double const center : {0.0, 0.3, 0.75, 1.0})
				{
					SCOPED_TRACE((isStereo ? "stereo, x " : "mono, x ") + std::to_string(x) + ", y " +
								 std::to_string(y) + ", centre " + std::to_string(center));
					ScopedContext const context;
					auto const panner = MakePanner(context, isStereo ? kPanStereoTo51 : kPanMonoTo51,
						ConstantParameters({static_cast<float>(x), static_cast<float>(y),
							static_cast<float>(center), 0.5f}));
					auto const gains =
						GetGainsAt(*panner, {.mFrames = 4, .mInputs = isStereo ? 2u : 1u, .mOutputs = 6});
					auto const expected = GetSurroundReference({x, y, center}, isStereo);
					for (unsigned i = 0; i < 5; ++i)
					{
						EXPECT_NEAR(static_cast<double>(gains[kMeasured[i]]), expected[i], kLastPlaces)
							<< "channel " << kMeasured[i];
					}
				}
			}
		}
	}
}

TEST(SurroundPanner, EachInputStaysOnItsSideAndTheCentreGetsTheMean)
{
	ScopedContext const context;
	auto const panner = MakePanner(context, kPanStereoTo51, ConstantParameters({0.5f, 0.5f, 0.5f, 0.0f}));
	auto const left = GetGainsAt(*panner, {.mFrames = 4, .mInputs = 2, .mOutputs = 6}, 0b10);
	auto const right = GetGainsAt(*panner, {.mFrames = 4, .mInputs = 2, .mOutputs = 6}, 0b01);
	auto const both = GetSurroundReference({0.5, 0.5, 0.5}, true);
	double const expectedLeft[] = {both[0], 0.0, both[2] / 2, 0.0, both[3], 0.0};
	double const expectedRight[] = {0.0, both[1], both[2] / 2, 0.0, 0.0, both[4]};
	for (unsigned channel = 0; channel < 6; ++channel)
	{
		EXPECT_NEAR(static_cast<double>(left[channel]), expectedLeft[channel], kLastPlaces) << channel;
		EXPECT_NEAR(static_cast<double>(right[channel]), expectedRight[channel], kLastPlaces) << channel;
	}
}

TEST(SurroundPanner, TheFilterRemembersOverJumpsResetsAndSilence)
{
	auto const one = [](unsigned long long, long long) { return 1.0f; };
	auto const lfeOf = [&](IAudioPanProcessor& ioPanner, long long inStart, bool inIsSilent)
	{
		return RunPanner(ioPanner, {.mStartFrame = inStart, .mFrames = 500, .mOutputs = 6}, BlocksOf(500),
			one, [inIsSilent](unsigned long long, long long) { return inIsSilent; })[3];
	};
	ScopedContext const context;
	auto const make = [&] {
		return MakePanner(context, kPanMonoTo51, ConstantParameters({0.5f, 0.0f, 0.0f, 1.0f}));
	};
	auto const steady = make();
	auto const first = lfeOf(*steady, 0, false);
	auto const second = lfeOf(*steady, 500, false);

	auto const disturbed = make();
	EXPECT_TRUE(disturbed->HasHistory());
	EXPECT_EQ(lfeOf(*disturbed, 0, false), first);
	lfeOf(*disturbed, 500, true);
	disturbed->Reset();
	disturbed->Preroll(kTimeZero, false);
	auto const clone = disturbed->Clone(k48000Hz, 16);
	EXPECT_EQ(lfeOf(*disturbed, 90000, false), second) << "the history was kept";
	EXPECT_EQ(lfeOf(*clone, 90000, false), first) << "a clone has none";

	for (int i = 0; i < 40; ++i)
	{
		lfeOf(*steady, 1000 + 500 * i, false);
	}
	EXPECT_NEAR(static_cast<double>(lfeOf(*steady, 21000, false).back()), 1.0, 1e-3)
		<< "what does not move passes, as nearly as single precision has it";
}

TEST(SurroundPanner, AFoldKeepsTheMixdownThatItWasMadeWith)
{
	ScopedContext const context;
	auto const rearOf = [](IAudioPanProcessor& ioPanner)
	{ return GetGainsAt(ioPanner, {.mFrames = 4, .mInputs = 6, .mOutputs = 1}, 0b011111)[0]; };
	auto const front = MakePanner(context, kPan51ToMono);
	AudioChannelMix::Set51MixdownType(AudioChannelMix::kMixdownFrontRear);
	auto const rear = MakePanner(context, kPan51ToMono);
	auto const frontClone = front->Clone(k48000Hz, 16);
	AudioChannelMix::Set51MixdownType(AudioChannelMix::kMixdownFront);
	EXPECT_EQ(rearOf(*front), 0.0f);
	EXPECT_EQ(rearOf(*frontClone), 0.0f);
	EXPECT_EQ(rearOf(*rear), 0.125f);
	EXPECT_EQ(rearOf(*rear->Clone(k48000Hz, 16)), 0.125f);
}

TEST(SurroundPanner, MissingControlsAndChannelsAreHarmless)
{
	ScopedContext const context;
	auto const panner = MakePanner(context, kPanMonoTo51, ConstantParameters({1.0f}));
	auto const gains = GetGainsAt(*panner, {.mFrames = 4, .mOutputs = 6});
	EXPECT_NEAR(static_cast<double>(gains[1]), 1.0, kLastPlaces);
	EXPECT_EQ(gains[3], 0.0f);
	EXPECT_EQ(GetGainsAt(*panner, {.mFrames = 4, .mOutputs = 2}), (std::vector<float>{0.0f, 0.0f}));
	EXPECT_EQ(GetGainsAt(*panner, {.mFrames = 4, .mInputs = 0, .mOutputs = 6}), std::vector<float>(6, 0.0f));
}

} // namespace SN::SurroundPannerTest
