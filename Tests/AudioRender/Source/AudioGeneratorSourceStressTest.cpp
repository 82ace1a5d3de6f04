#include "AudioRender/Source/AudioGeneratorSource.h"

#include "Support/Fakes.h"
#include "Support/SimpleGenerator.h"
#include "Vexilon/MediaManager.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace SN
{
namespace
{

using namespace Testing;

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
		auto source = AudioGeneratorSource::Create(
			zorvcore::classref::MakeObject<AloneGenerator>(), kChunk, TickTime(kFrames, k48000Hz));
		std::lock_guard const lock(mMutex);
		std::swap(source, mSource);
	}

private:
	std::mutex mMutex;
	InterfaceRef<AudioGeneratorSource> mSource;
};

// Reads a range and tells whether each chunk's part of it is the generator's own or silence as a whole.
bool ReadsCleanly(
	AudioGeneratorSource& ioSource, unsigned inFirst, dsp::AudioBuffer& ioBuffer, unsigned& outHeard)
{
	ioSource.ReadPrefetchedAudio(TickTime(inFirst, k48000Hz), ioBuffer);
	outHeard = 0;
	for (unsigned channel = 0; channel < kChannels; ++channel)
	{
		float const* const samples = ioBuffer.GetChannel(channel);
		for (unsigned i = 0; i < ioBuffer.GetUseSize(); ++i)
		{
			unsigned const frame = inFirst + i;
			bool const opensChunk = i == 0 || frame % kChunk == 0;
			float const sample = ioBuffer.IsChannelSilent(channel) ? 0.0f : samples[i];
			float const expected = PositionSample(channel, frame);
			float const before = opensChunk || ioBuffer.IsChannelSilent(channel) ? sample : samples[i - 1];
			bool const isSilence = sample == 0.0f;
			if ((!isSilence && sample != expected) || (before == 0.0f) != isSilence)
			{
				return false;
			}
			outHeard += isSilence ? 0 : 1;
		}
	}
	return true;
}

std::chrono::seconds GetDuration()
{
	char const* const seconds = std::getenv("SONARO_STRESS_SECONDS");
	return std::chrono::seconds(seconds ? std::atoi(seconds) : 5);
}

// One thread reads, two prefetch, one purges at random and one drops the source. SONARO_STRESS_SECONDS
// makes it longer.
TEST(AudioGeneratorSourceStress, EverySampleIsTheGeneratorsOwnOrSilence)
{
	auto const manager = VX::GetMediaManager();
	auto const budget = manager->GetByteBudget();
	Current current;
	std::atomic<bool> isOver{false};
	std::vector<std::thread> threads;
	auto const repeat = [&](unsigned inSeed, std::function<void(std::mt19937&)> const& inStep)
	{
		threads.emplace_back(
			[&isOver, inSeed, inStep]
			{
				std::mt19937 random(inSeed);
				while (!isOver.load())
				{
					inStep(random);
				}
			});
	};
	for (unsigned const seed : {1u, 2u})
	{
		repeat(seed,
			[&](std::mt19937& ioRandom)
			{
				current.Get()->PrefetchAudioData(
					0, TickTime(ioRandom() % kFrames, k48000Hz), static_cast<unsigned>(ioRandom() % 1000));
			});
	}
	repeat(3,
		[&](std::mt19937& ioRandom)
		{
			manager->SetByteBudget(ioRandom() % 4 == 0 ? budget : ioRandom() % 20000);
			if (ioRandom() % 8 == 0)
			{
				current.Get()->Discard();
			}
			std::this_thread::yield();
		});
	repeat(4,
		[&](std::mt19937& ioRandom)
		{
			std::this_thread::sleep_for(std::chrono::microseconds(ioRandom() % 3000));
			current.Replace();
		});

	std::mt19937 random(5);
	dsp::AudioBuffer buffer(kChannels, 700);
	unsigned long long heard = 0;
	auto const end = std::chrono::steady_clock::now() + GetDuration();
	while (std::chrono::steady_clock::now() < end)
	{
		auto const source = current.Get();
		unsigned const first = static_cast<unsigned>(random()) % kFrames;
		buffer.SetUseSize(1 + static_cast<unsigned>(random()) % 700);
		unsigned now = 0;
		ASSERT_TRUE(ReadsCleanly(*source, first, buffer, now)) << "at " << first;
		heard += now;
	}
	isOver.store(true);
	for (std::thread& thread : threads)
	{
		thread.join();
	}
	EXPECT_GT(heard, 0u) << "something was heard at all";

	// No chunk is lost for good.
	manager->SetByteBudget(budget);
	auto const source = current.Get();
	source->PrefetchAudioData(0, kTimeZero, kFrames);
	dsp::AudioBuffer whole(kChannels, kFrames);
	unsigned all = 0;
	EXPECT_TRUE(ReadsCleanly(*source, 0, whole, all));
	EXPECT_EQ(all, kFrames * kChannels);
}

} // namespace
} // namespace SN
