#include "PannerReference.h"

#include "Support/Engine.h"

namespace SN::PannerReferenceTest
{

// In and beside the middle, at both ends, up and down.
constexpr double kWay[] = {0.5, 0.75, 1.0, 0.25, 0.0, 0.5, 0.375, 0.625, 0.25};
constexpr double kStill[] = {0.3, 0.2, 0.6, 0.8};
constexpr unsigned kBlockFrames = 1000;

struct Case
{
	PanProcessorType mType;
	unsigned mInputs;
	unsigned mOutputs;
};
constexpr Case kCases[] = {
	{kPanMonoToStereo, 1, 2},
	{kPanStereoToStereo, 2, 2},
	{kPanMonoToAdaptive, 1, 2},
	{kPanStereoToAdaptive, 2, 2},
	{kPanBalance, 4, 4},
	{kPanBalanceWithIdentity, 4, 4},
	{kPanMonoTo51, 1, 6},
	{kPanStereoTo51, 2, 6},
};

double GetInput(unsigned inChannel, long long inFrame)
{
	double const time = static_cast<double>(inFrame);
	return inChannel % 2 == 0 ? 0.5 * std::sin(time * 0.01) + 0.25 : 0.4 * std::cos(time * 0.013);
}

std::vector<std::vector<double>> MakeControls(PanProcessorType inType, unsigned inMoved)
{
	std::vector<std::vector<double>> controls;
	for (double const position : kWay)
	{
		controls.emplace_back(kStill, kStill + GetNumControls(inType))[inMoved] = position;
	}
	return controls;
}

// Of a parameter for each control, which step from block to block.
std::vector<InterfaceRef<IRenderableAudioComponentParam>> MakeParameters(
	std::vector<std::vector<double>> const& inControls, FrameRate const& inRate)
{
	std::vector<InterfaceRef<IRenderableAudioComponentParam>> params;
	for (std::size_t index = 0; index < inControls[0].size(); ++index)
	{
		params.push_back(MakeObject<FakeParameter>(
			[=](TickTime const& inTime)
			{
				auto const block = static_cast<std::size_t>(inTime.ToFrame64(inRate)) / kBlockFrames;
				return static_cast<float>(inControls[block][index]);
			}));
	}
	return params;
}

TEST(Panners, FollowEachControlUpAndDownAtEveryRate)
{
	for (double const rate : {44100.0, 48000.0, 96000.0})
	{
		for (Case const& test : kCases)
		{
			for (unsigned moved = 0; moved < GetNumControls(test.mType); ++moved)
			{
				SCOPED_TRACE("type " + std::to_string(test.mType) + ", control " + std::to_string(moved) +
							 " at " + std::to_string(rate));
				Prefetcher prefetcher;
				ScopedContext const context(4096, &prefetcher);
				auto const frameRate = FrameRate::FromSamplesPerSecond(rate);
				auto const controls = MakeControls(test.mType, moved);
				auto const panner =
					MakeAnyPanner(context, test.mType, MakeParameters(controls, frameRate), frameRate);
				auto const expected = RunReference({test.mType, rate, kBlockFrames, controls, &GetInput});
				auto const got = RunPanner(*panner,
					{.mFrames = static_cast<unsigned>(expected[0].size()),
						.mInputs = test.mInputs,
						.mOutputs = test.mOutputs,
						.mControlInterval = kBlockFrames,
						.mFrameRate = frameRate},
					RandomBlocks(moved + 1, 700),
					[](unsigned long long inChannel, long long inFrame)
					{ return static_cast<float>(GetInput(static_cast<unsigned>(inChannel), inFrame)); });
				ASSERT_EQ(got.size(), expected.size());
				for (unsigned channel = 0; channel < test.mOutputs; ++channel)
				{
					// The poles of the filter lie close to 1: single precision loses the more the higher the rate.
					double const tolerance = test.mOutputs == 6 && channel == 3 ? 1e-8 * rate : 1e-6;
					for (std::size_t i = 0; i < expected[channel].size(); ++i)
					{
						ASSERT_NEAR(static_cast<double>(got[channel][i]), expected[channel][i], tolerance)
							<< "channel " << channel << ", frame " << i;
					}
				}
			}
		}
	}
}

} // namespace SN::PannerReferenceTest
