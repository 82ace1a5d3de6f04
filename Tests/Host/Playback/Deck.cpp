#include "Deck.h"

#include "Host/Sequence/MemoryMedia.h"
#include "Render/RangeRender.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Media/GraphMedia.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <numeric>
#include <thread>
#include <utility>

namespace SonaroHost::Playback::Testing
{

namespace
{

constexpr std::chrono::seconds kPatience(60);

class SoundInMemory final : public GraphMedia
{
public:
	std::optional<HostError> FindFailure() const override { return std::nullopt; }
	std::vector<DamagedMedia> ListDamaged() const override { return {}; }
};

} // namespace

Deck::Deck(Programme const& inProgramme)
	// A real-time thread comes before the one that asks for blocks, so that hardly anything would be late.
	: mPlayback(
		  inProgramme, mDevice, {.mAheadSeconds = 0.005, .mDeviceBlockFrames = 128, .mIsRealtime = false})
{
}

Frames Deck::Pull(std::int64_t inFrames)
{
	for (std::int64_t left = inFrames; left > 0; left -= 128)
	{
		EXPECT_TRUE(mPlayback.WaitUntilFilled(kPatience));
		mDevice.Advance(std::min<std::int64_t>(left, 128));
	}
	return mDevice.TakeCaptured();
}

Frames Deck::PullLate(std::int64_t inFrames)
{
	mDevice.Advance(inFrames);
	return mDevice.TakeCaptured();
}

Frames Deck::TakeOver(Programme const& inProgramme)
{
	return PullDuring([&] { mPlayback.TakeOver(inProgramme); });
}

Frames Deck::PullDuring(std::function<void()> const& inWork)
{
	std::atomic<bool> isDone = false;
	std::thread builder(
		[&]
		{
			inWork();
			isDone = true;
		});
	while (!isDone)
	{
		EXPECT_TRUE(mPlayback.WaitUntilFilled(kPatience));
		mDevice.Advance(128);
	}
	builder.join();
	return mDevice.TakeCaptured();
}

void Deck::Rest()
{
	constexpr std::int64_t kMoreThanRing = 768;
	mPlayback.Stop();
	Pull(kMoreThanRing);
}

Programme MakeProgramme(std::shared_ptr<Sequence::Description const> const& inDescription, int inSampleRate,
	std::int64_t inFrames)
{
	Programme programme;
	programme.mDescription = inDescription;
	programme.mSampleRate = inSampleRate;
	programme.mFrames =
		inFrames > 0 ? inFrames : GetLength(*inDescription).ToFrame64(programme.GetFrameRate());
	programme.mMedia = std::make_shared<SoundInMemory>();
	programme.mOpenForGraph = [] { return std::make_unique<SoundInMemory>(); };
	return programme;
}

Programme MakeCountingProgramme(std::int64_t inFrames, float inGain)
{
	std::vector<float> samples(static_cast<std::size_t>(inFrames));
	std::iota(samples.begin(), samples.end(), 1.0f);
	auto const description = std::make_shared<Sequence::Description>();
	description->mLayout = MakeLayoutOfChannels(1);
	Sequence::Track& track = description->mTracks.emplace_back();
	track.mLayout = description->mLayout;
	track.mChain.mStages.emplace_back(Sequence::Fader{AutomationParameter<float>::Create(inGain), {}});
	Sequence::Item& item = track.mItems.emplace_back();
	item.mEnd = SN::TickTime(inFrames, SN::FrameRate::FromSamplesPerSecond(48000));
	item.mContent = Sequence::Clip{std::make_shared<Sequence::Testing::MemoryMedia>(
									   48000.0, Sequence::Testing::MemoryMedia::Samples{std::move(samples)}),
		0, {}};
	return MakeProgramme(description, 48000, inFrames);
}

Frames Export(Programme const& inProgramme)
{
	Frames frames;
	RangeRender render;
	render.mRange = {0, inProgramme.mFrames};
	render.mSink = [&](dsp::AudioBuffer& ioBlock)
	{
		for (unsigned i = 0; i < ioBlock.GetUseSize(); ++i)
		{
			for (unsigned channel = 0; channel < ioBlock.GetNumChannels(); ++channel)
			{
				frames.push_back(ioBlock.IsChannelSilent(channel) ? 0.0f : ioBlock.GetChannel(channel)[i]);
			}
		}
	};
	EXPECT_TRUE(RenderRange(inProgramme, render));
	return frames;
}

} // namespace SonaroHost::Playback::Testing
