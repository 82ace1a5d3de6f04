#include "AudioRender/Source/AudioGeneratorSource.h"

#include "Support/Engine.h"
#include "Vexilon/MediaManager.h"

#include <cstdlib>

namespace SN::AudioGeneratorSourceStressTest
{

constexpr unsigned kChunk = 128;
constexpr unsigned kFrames = 40 * kChunk;
constexpr unsigned kChannels = 2;

// A generator that notices when two render it at once.
class AloneGenerator final : public SimpleGenerator
{
public:
	AloneGenerator()
		: SimpleGenerator(kChannels)
	{
	}

	void GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool) override
	{
		EXPECT_FALSE(mIsRendering.exchange(true)) << "two renderings at once";
		FillFrom(&PositionSample, kChannels, inTime, k48000Hz, inBuffer);
		mIsRendering.store(false);
	}

private:
	std::atomic<bool> mIsRendering{false};
};

// The source in use, which one thread replaces while others work with it.
class Current
{
public:
	Current() { Replace(); }
	InterfaceRef<AudioGeneratorSource> Get()
	{
		std::lock_guard const lock(mMutex);
		return mSource;
	}
	void Replace()
	{
		auto source =
			AudioGeneratorSource::Create(MakeObject<AloneGenerator>(), kChunk, TickTime(kFrames, k48000Hz));
		std::lock_guard const lock(mMutex);
		std::swap(source, mSource);
	}

private:
	std::mutex mMutex;
	InterfaceRef<AudioGeneratorSource> mSource;
};

// How many samples of a range are heard; each chunk's part of it has to be the generator's own or silence as a
// whole.
unsigned ReadCleanly(AudioGeneratorSource& ioSource, unsigned inFirst, dsp::AudioBuffer& ioBuffer)
{
	ioSource.ReadPrefetchedAudio(At(inFirst), ioBuffer);
	unsigned heard = 0;
	for (unsigned channel = 0; channel < kChannels; ++channel)
	{
		auto const samples = Heard(ioBuffer, channel);
		for (unsigned i = 0; i < samples.size(); ++i)
		{
			bool const isSilence = samples[i] == 0.0f;
			bool const opensChunk = i == 0 || (inFirst + i) % kChunk == 0;
			bool const goesOn = opensChunk || (samples[i - 1] == 0.0f) == isSilence;
			bool const isOwn = isSilence || samples[i] == PositionSample(channel, inFirst + i);
			EXPECT_TRUE(goesOn && isOwn) << "channel " << channel << " at " << inFirst + i;
			heard += isSilence ? 0 : 1;
		}
	}
	return heard;
}

std::chrono::seconds GetDuration()
{
	char const* const seconds = std::getenv("SONARO_STRESS_SECONDS");
	return std::chrono::seconds(seconds ? std::atoi(seconds) : 5);
}

// Four threads beside the one that reads: two prefetch, one purges at random and one drops the source.
void Disturb(unsigned inThread, std::mt19937& ioRandom, Current& ioCurrent, unsigned long long inBudget)
{
	switch (inThread)
	{
	case 0:
		VX::GetMediaManager()->SetByteBudget(ioRandom() % 4 == 0 ? inBudget : ioRandom() % 20000);
		if (ioRandom() % 8 == 0)
		{
			ioCurrent.Get()->Discard();
		}
		std::this_thread::yield();
		break;
	case 1:
		std::this_thread::sleep_for(std::chrono::microseconds(ioRandom() % 3000));
		ioCurrent.Replace();
		break;
	default:
		ioCurrent.Get()->PrefetchAudioData(
			0, At(ioRandom() % kFrames), static_cast<unsigned>(ioRandom() % 1000));
	}
}

// SONARO_STRESS_SECONDS makes it longer.
TEST(AudioGeneratorSourceStress, EverySampleIsTheGeneratorsOwnOrSilence)
{
	auto const manager = VX::GetMediaManager();
	auto const budget = manager->GetByteBudget();
	Current current;
	dsp::AudioBuffer buffer(kChannels, 700);
	unsigned long long heard = 0;
	auto const end = std::chrono::steady_clock::now() + GetDuration();
	RunOnThreads(5,
		[&](unsigned inThread)
		{
			std::mt19937 own(inThread);
			while (std::chrono::steady_clock::now() < end && !HasFailure())
			{
				if (inThread < 4)
				{
					Disturb(inThread, own, current, budget);
					continue;
				}
				buffer.SetUseSize(1 + static_cast<unsigned>(own()) % 700);
				heard += ReadCleanly(*current.Get(), static_cast<unsigned>(own()) % kFrames, buffer);
			}
		});
	EXPECT_GT(heard, 0u) << "something was heard at all";

	// No chunk is lost for good.
	manager->SetByteBudget(budget);
	auto const source = current.Get();
	source->PrefetchAudioData(0, kTimeZero, kFrames);
	dsp::AudioBuffer whole(kChannels, kFrames);
	EXPECT_EQ(ReadCleanly(*source, 0, whole), kFrames * kChannels);
}

} // namespace SN::AudioGeneratorSourceStressTest
