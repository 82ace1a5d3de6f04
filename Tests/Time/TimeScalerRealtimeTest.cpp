#include "Sonaro/AudioResamplerFactory.h"
#include "Sonaro/IAudioTimeScalerFactory.h"
#include "Support/Engine.h"
#include "Support/RealtimeGuard.h"

namespace SN::TimeScalerRealtimeTest
{

// Does so many times what takes no memory and no lock.
template <class Do>
void RunGuarded(unsigned inBlocks, Do const& inDo)
{
	int allocations = 0;
	int locks = 0;
	{
		RealtimeGuard const guard;
		for (unsigned block = 0; block < inBlocks; ++block)
		{
			inDo(block);
		}
		allocations = guard.GetAllocations();
		locks = guard.GetLocks();
	}
	EXPECT_EQ(allocations, 0);
	EXPECT_EQ(locks, 0);
}

TEST(TimeScalerRealtime, StretchesWithoutAllocationsAndLocks)
{
	for (double const ratio : {0.05, 0.1, 0.8, 1.25, 10.0})
	{
		for (double const pitchFactor : {1.0, 1.5})
		{
			SCOPED_TRACE(std::to_string(ratio) + ", " + std::to_string(pitchFactor));
			auto const scaler = GetAudioTimeScalerFactory()->CreateAudioTimeScaler(RenderQuality::kHigh);
			scaler->Init(ratio, FrameRate::FromSamplesPerSecond(48000), 2, pitchFactor, 2048, 1);
			dsp::AudioBuffer input = MakeBuffer(2, scaler->GetMaxInputSampleCount(700, 0.0), 0.5f);
			dsp::AudioBuffer output(2, 700);
			RunGuarded(20,
				[&](unsigned inBlock)
				{
					unsigned const numInput = scaler->GetInputSampleCount(700);
					input.SetChannelZero(1, inBlock % 5 == 3);
					scaler->Process(input, output, numInput, 700);
				});
			EXPECT_EQ(output.IsSilent(), ratio < 0.1);
		}
	}
}

TEST(TimeScalerRealtime, TimeAlteredItemsPlayWithoutAllocationsAndLocks)
{
	constexpr unsigned kMaxBlock = 1000;
	struct Case
	{
		double mSpeed;
		double mScalerSpeed;
		bool mMaintainPitch;
		bool mReverse;
	};
	constexpr Case kCases[] = {{0.7, 0.7, true, false}, {1.6, 1.6, true, true}, {1.5, 1.25, true, false},
		{0.5, 0.6, true, true}, {1.3, 1.0, false, false}};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(Message() << test.mSpeed << " of " << test.mScalerSpeed);
		ScopedContext const context(kMaxBlock);
		auto const source = MakeObject<FakeGenerator>(1, [](unsigned long long, long long inFrame)
			{ return 0.5f * std::sin(0.05f * static_cast<float>(inFrame % 100000)); });
		source->mRecordsCalls = false;
		auto const item = GraphFactory().CreateTimeAlteredAudioClipTrackItemRenderer({.mContext = context,
			.mFrameRate = k48000Hz,
			.mGenerator = source,
			.mPanProcessor = MakePanner(context, kPanMonoToStereo, ConstantParameters({0.5f})),
			.mSpeed = test.mSpeed,
			.mReverse = test.mReverse,
			.mMaintainPitch = test.mMaintainPitch,
			.mScalerSpeed = test.mScalerSpeed,
			.mItemStartTime = kTimeZero,
			.mItemEndTime = At(480000)});
		item->Preroll(kTimeZero, false);
		dsp::AudioBuffer buffer(2, kMaxBlock);
		float loudest = 0.0f;
		long long frame = 0;
		RunGuarded(40,
			[&](unsigned inBlock)
			{
				unsigned const count = inBlock == 0 ? kMaxBlock : 1 + inBlock * 137 % kMaxBlock;
				buffer.SetUseSize(count);
				item->GetAudioData(At(frame), buffer, false);
				loudest = std::max(loudest, std::fabs(buffer.GetChannel(1)[count / 2]));
				frame += count;
			});
		EXPECT_GT(loudest, 0.2f);
	}
}

TEST(TimeScalerRealtime, SpecializedResamplersTakeNoMemory)
{
	for (unsigned const rate : {24000u, 32000u})
	{
		auto const resampler = AudioResamplerFactory::CreateSpecializedResampler(
			FrameRate::FromSamplesPerSecond(rate), FrameRate::FromSamplesPerSecond(48000), 2);
		dsp::AudioBuffer input = MakeBuffer(2, 1000, 0.5f);
		dsp::AudioBuffer output(2, 700);
		RunGuarded(10,
			[&](unsigned inBlock)
			{
				input.SetChannelZero(0, inBlock == 5);
				resampler->Process(input, output, resampler->GetInputSampleCount(700), 700);
				resampler->Reset(inBlock);
			});
		EXPECT_NEAR(output.GetChannel(0)[500], 0.5f, 0.01f);
	}
}

} // namespace SN::TimeScalerRealtimeTest
