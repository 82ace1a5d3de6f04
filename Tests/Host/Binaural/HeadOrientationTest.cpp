#include "../Sequence/MemoryMedia.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <vector>

namespace SonaroHost::Sequence::Testing::HeadOrientationTest
{

constexpr int kRate = 48000;
constexpr unsigned kBlock = 500;
constexpr std::int64_t kFrames = 20 * kBlock;

using Heard = std::vector<std::vector<float>>;

// A tone from the left loudspeaker.
Description MakeSequence(std::shared_ptr<HeadOrientation> inHead)
{
	constexpr double kTone = 500.0;
	Heard samples(2, std::vector<float>(kFrames));
	for (std::size_t i = 0; i < samples[0].size(); ++i)
	{
		samples[0][i] = static_cast<float>(
			0.1 * std::sin(2.0 * std::numbers::pi * kTone * static_cast<double>(i) / kRate));
	}
	Description sequence;
	sequence.mLayout = zorvmediatypes::CreateStereoChannelLayout();
	Track& track = sequence.mTracks.emplace_back();
	track.mLayout = sequence.mLayout;
	Item& item = track.mItems.emplace_back();
	item.mEnd = SN::TickTime(kFrames, SN::FrameRate::FromSamplesPerSecond(kRate));
	item.mContent = Clip{std::make_shared<MemoryMedia>(kRate, samples), 0, {}};
	HearWithTwoEars({nullptr, std::move(inHead)}, sequence);
	return sequence;
}

enum class Purpose
{
	kPlayback,
	kExport,
};

// Plays it block by block, with the head turned before one of them.
Heard Play(Purpose inPurpose, HeadAngles const& inFirst, std::optional<unsigned> inBlockOfTurn = {},
	HeadAngles const& inThen = {})
{
	auto const head = std::make_shared<HeadOrientation>(inFirst);
	auto const rate = SN::FrameRate::FromSamplesPerSecond(kRate);
	SN::Prefetcher prefetcher;
	SN::Prefetcher* const playback = inPurpose == Purpose::kPlayback ? &prefetcher : nullptr;
	RenderContextScope const context(kBlock, SN::kTimeMax, SN::ImmutableString("test"), playback);
	SequenceGraph const graph(MakeSequence(head), context.Get(), rate, playback);
	dsp::AudioBuffer block(2, kBlock);
	SN::IAudioGenerator& generator = *graph.GetGenerator();
	generator.InitializeAudioFilters();
	generator.Preroll(SN::kTimeZero, false);
	Heard heard(2);
	for (std::int64_t done = 0; done < kFrames; done += kBlock)
	{
		if (inBlockOfTurn && done == *inBlockOfTurn * std::int64_t{kBlock})
		{
			head->Set(inThen);
		}
		generator.GetAudioData(SN::TickTime(done, rate), block, false);
		for (unsigned ear = 0; ear < 2; ++ear)
		{
			heard[ear].insert(heard[ear].end(), block.GetChannel(ear), block.GetChannel(ear) + kBlock);
		}
	}
	generator.ShutdownAudioFilters();
	return heard;
}

// A click would have one that the tone has not.
float FindLargestStep(std::vector<float> const& inSamples)
{
	float largest = 0.0f;
	for (std::size_t i = 1; i < inSamples.size(); ++i)
	{
		largest = std::max(largest, std::fabs(inSamples[i] - inSamples[i - 1]));
	}
	return largest;
}

TEST(HeadOrientation, TurnsThePlaybackWithinABlockAndLeavesExportsAlone)
{
	constexpr unsigned kTurn = 10;
	constexpr HeadAngles kFirst{-40.0f, 10.0f, 0.0f};
	constexpr HeadAngles kThen{130.0f, -5.0f, 20.0f};
	Heard const before = Play(Purpose::kPlayback, kFirst);
	Heard const after = Play(Purpose::kPlayback, kThen);
	Heard const turned = Play(Purpose::kPlayback, kFirst, kTurn, kThen);
	EXPECT_EQ(Play(Purpose::kExport, kFirst, kTurn, kThen), Play(Purpose::kExport, kFirst));
	EXPECT_EQ(Play(Purpose::kExport, kFirst), before);
	for (std::size_t ear = 0; ear < 2; ++ear)
	{
		EXPECT_LT(FindLargestStep(turned[ear]),
			1.1f * std::max(FindLargestStep(before[ear]), FindLargestStep(after[ear])));
	}
}

} // namespace SonaroHost::Sequence::Testing::HeadOrientationTest
