#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include "Support/Common.h"
#include "Support/SameBits.h"
#include "Support/Trials.h"
#include "zorvaudiodsp/FFT.h"

#include <numbers>
#include <numeric>

namespace OmegaEngineTest
{

using namespace dsp::stretch::omega;
using SN::Testing::GetNumTrials;
using Sound = std::vector<std::vector<float>>;
using SampleAt = std::function<float(unsigned inChannel, long long inPosition)>;

constexpr unsigned kBlock = 512;
constexpr float kRate = 48000.0f;

// An engine, and the source that it has taken in so far.
class Player
{
public:
	explicit Player(
		unsigned inChannels, SampleAt inSource = [](unsigned, long long) { return 0.0f; },
		OmegaEngineKind inKind = OmegaEngineKind::kSplice, float inRate = kRate,
		OmegaLimits const& inLimits = {0.1f, 10.0f, -40.0f, 40.0f})
		: mSource(std::move(inSource)),
		  mOutput(inChannels)
	{
		OmegaEngine* engine = nullptr;
		EXPECT_EQ(OmegaEngine::CreateOfKind(&engine, inKind, inRate, inChannels, kBlock, inLimits), 0);
		mEngine.reset(engine);
		mEngine->Begin(inRate, nullptr, 100000);
	}

	void Set(float inRatio, float inSemitones = 0.0f)
	{
		mEngine->SetRatio(inRatio, inRatio);
		mEngine->SetPitch(inSemitones, inSemitones);
	}
	// The input lies at the end of its memory, where a sanitizer sees who reads more of it.
	void Play(unsigned inCount)
	{
		ASSERT_LE(inCount, mEngine->GetOutputLimit());
		unsigned const needed = mEngine->GetInputNeeded(inCount);
		ASSERT_LE(needed, mEngine->GetInputForBlock(kBlock, 0.1f));
		Sound input(mOutput.size(), std::vector<float>(needed));
		std::vector<float const*> inputs;
		std::vector<float*> outputs;
		for (unsigned channel = 0; channel < mOutput.size(); ++channel)
		{
			for (unsigned i = 0; i < needed; ++i)
			{
				input[channel][i] = mSource(channel, mTaken + i);
			}
			inputs.push_back(input[channel].data());
			mOutput[channel].resize(mOutput[channel].size() + inCount);
			outputs.push_back(mOutput[channel].data() + mOutput[channel].size() - inCount);
		}
		mEngine->Process(inCount, inputs.data(), outputs.data());
		mTaken += needed;
	}
	void PlayUntil(
		std::size_t inLength, std::function<unsigned()> const& inBlock = [] { return kBlock; })
	{
		while (mOutput[0].size() < inLength && !testing::Test::HasFatalFailure())
		{
			Play(static_cast<unsigned>(std::min<std::size_t>(inBlock(), inLength - mOutput[0].size())));
		}
	}

	OmegaEngine& GetEngine() { return *mEngine; }
	Sound const& GetOutput() const { return mOutput; }
	long long GetTaken() const { return mTaken; }

private:
	std::unique_ptr<OmegaEngine, void (*)(OmegaEngine*)> mEngine{nullptr, &OmegaEngine::Destroy};
	SampleAt mSource;
	Sound mOutput;
	long long mTaken = 0;
};

double ToneAt(double inFrequency, double inPosition)
{
	return 0.5 * std::sin(2.0 * std::numbers::pi * inFrequency * inPosition / static_cast<double>(kRate));
}

// Steady, in equal temperament, in which notes have no period in common, each with another phase between channels.
SampleAt MakeChord(std::vector<double> inNotes, double inLevel = 0.4, float inRate = kRate)
{
	return [=](unsigned inChannel, long long inPosition)
	{
		double const place = static_cast<double>(inPosition) * static_cast<double>(kRate / inRate);
		double sum = 0.0;
		for (std::size_t i = 0; i < inNotes.size(); ++i)
		{
			sum += inLevel * ToneAt(inNotes[i], place + static_cast<double>(inChannel * i) * 9.0);
		}
		return static_cast<float>(sum);
	};
}

std::vector<double> const kMajor{261.626, 329.628, 391.995, 523.251};

float Noise(unsigned inChannel, long long inPosition)
{
	auto bits = static_cast<std::uint64_t>(inPosition * 2 + inChannel + 12345) * 0x9e3779b97f4a7c15ull;
	bits = (bits ^ (bits >> 29)) * 0xbf58476d1ce4e5b9ull;
	return static_cast<float>(static_cast<std::int64_t>(bits)) * 0x1p-64f;
}

// Both kinds, as far as they are built in.
std::vector<OmegaEngineKind> GetKinds()
{
	std::vector<OmegaEngineKind> kinds{OmegaEngineKind::kSplice, OmegaEngineKind::kRubberBand};
	std::erase_if(kinds, [](OmegaEngineKind inKind) { return !IsOmegaEngineKindBuiltIn(inKind); });
	return kinds;
}

TEST(OmegaEngine, TakesJustWhatTheRatiosAskForOverAThousandSeams)
{
	for (OmegaEngineKind const kind : GetKinds())
	{
		for (unsigned seed = 0; seed < GetNumTrials(4); ++seed)
		{
			SCOPED_TRACE(seed);
			std::mt19937 random(seed);
			std::uniform_real_distribution<float> octaves(-3.3f, 3.3f);
			Player player(1, Noise, kind);
			player.Set(1.0f);
			player.Play(kBlock);
			long long const ahead = player.GetTaken() - kBlock;
			double source = kBlock;
			for (unsigned seam = 0; seam < 1000; ++seam)
			{
				unsigned const count = random() % kBlock + 1;
				float const ratio = std::clamp(std::exp2(octaves(random)), 0.1f, 10.0f);
				player.Set(ratio, seed % 2 == 0 ? 0.0f : octaves(random) * 6.0f);
				EXPECT_LE(player.GetEngine().GetInputNeeded(count),
					player.GetEngine().GetInputForBlock(count, ratio));
				player.Play(count);
				source += count / static_cast<double>(ratio);
			}
			// Back at the first ratio, as much has been taken in ahead as at the start.
			player.Set(1.0f);
			player.PlayUntil(player.GetOutput()[0].size() + 20000);
			source += 20000.0;
			EXPECT_NEAR(static_cast<double>(player.GetTaken() - ahead), source, 1.5);
		}
	}
}

TEST(OmegaEngine, StaysInTimeThroughManyRatios)
{
	// Bursts of five milliseconds, four a second.
	auto const bursts = [](unsigned, long long inPosition)
	{ return inPosition % 12000 > 11760 ? Noise(0, inPosition) : 0.0f; };
	for (OmegaEngineKind const kind : GetKinds())
	{
		std::mt19937 random(4);
		std::uniform_real_distribution<float> steps(-0.25f, 0.25f);
		Player player(1, bursts, kind);
		float octaves = 0.0f;
		double source = 0.0;
		double energy = 0.0;
		double energyInTime = 0.0;
		for (unsigned i = 0; i < GetNumTrials(200); ++i)
		{
			octaves = std::clamp(octaves + steps(random), -1.0f, 1.0f);
			float const ratio = std::exp2(octaves);
			player.Set(ratio);
			std::size_t const start = player.GetOutput()[0].size();
			player.PlayUntil(start + 4000);
			for (std::size_t k = start; k < start + 4000; ++k)
			{
				auto const sample = static_cast<double>(player.GetOutput()[0][k]);
				// Within 25 milliseconds of a burst.
				bool const isInTime = std::fmod(source + 1440.0, 12000.0) < 2640.0;
				energy += sample * sample;
				energyInTime += isInTime ? sample * sample : 0.0;
				source += 1.0 / static_cast<double>(ratio);
			}
		}
		EXPECT_GT(energyInTime, 0.98 * energy);
		EXPECT_GT(energy, 100.0);
	}
}

TEST(OmegaEngine, GivesTheBitsOfTheSourceAtRatioOne)
{
	Player player(2, Noise);
	player.PlayUntil(50000);
	for (unsigned channel = 0; channel < 2; ++channel)
	{
		for (unsigned i = 0; i < 50000; ++i)
		{
			ASSERT_EQ(player.GetOutput()[channel][i], Noise(channel, i)) << i;
		}
	}
}

TEST(OmegaEngine, AnySplitEqualsWhole)
{
	auto const music = [](unsigned inChannel, long long inPosition)
	{
		auto const place = static_cast<double>(inPosition);
		float const beat = std::exp(static_cast<float>(inPosition % 2500) * -0.01f);
		return static_cast<float>(ToneAt(330.0, place) + ToneAt(415.0 + inChannel, place)) +
			   beat * Noise(inChannel, inPosition);
	};
	struct Case
	{
		float mRatio;
		float mSemitones;
	};
	for (SampleAt const& sound : {SampleAt(music), MakeChord(kMajor)})
	{
		for (Case const& test :
			{Case{0.8f, 0.0f}, {1.25f, 0.0f}, {3.0f, 0.0f}, {0.11f, 0.0f}, {1.0f, 5.0f}, {0.5f, 12.0f}})
		{
			SCOPED_TRACE(testing::Message() << test.mRatio << ", " << test.mSemitones);
			std::mt19937 random(1);
			Player whole(2, sound);
			Player parts(2, sound);
			whole.Set(test.mRatio, test.mSemitones);
			parts.Set(test.mRatio, test.mSemitones);
			whole.PlayUntil(60000);
			parts.PlayUntil(60000, [&] { return random() % kBlock + 1; });
			EXPECT_TRUE(SameBits(whole.GetOutput()[0], parts.GetOutput()[0]));
			EXPECT_TRUE(SameBits(whole.GetOutput()[1], parts.GetOutput()[1]));
		}
	}
}

// What a sound has besides a tone of this frequency, by all that it has, in decibels.
double GetResidue(std::vector<float> const& inSound, double inFrequency)
{
	constexpr unsigned start = 20000;
	constexpr unsigned count = 48000;
	double sines = 0.0;
	double cosines = 0.0;
	double energy = 0.0;
	for (unsigned i = start; i < start + count; ++i)
	{
		double const sample = static_cast<double>(inSound[i]);
		sines += sample * 2.0 * ToneAt(inFrequency, i);
		cosines += sample * 2.0 * ToneAt(inFrequency, i + static_cast<double>(kRate) / inFrequency / 4.0);
		energy += sample * sample;
	}
	double const tone = 2.0 * (sines * sines + cosines * cosines) / count;
	return 10.0 * std::log10(std::max(energy - tone, 1e-12) / energy);
}

// In two channels of opposite phase, of which a plain sum would be silent.
TEST(OmegaEngine, KeepsTonesPureAtTheirPitch)
{
	for (double const frequency : {50.0, 100.0, 440.0, 2000.0, 8000.0})
	{
		for (float const ratio : {0.5f, 0.8f, 0.95f, 1.25f, 2.0f})
		{
			SCOPED_TRACE(testing::Message() << frequency << " Hz, ratio " << ratio);
			Player player(2,
				[&](unsigned inChannel, long long inPosition)
				{
					return static_cast<float>(
						ToneAt(frequency, static_cast<double>(inPosition)) * (inChannel == 0 ? 1.0 : -1.0));
				});
			player.Set(ratio);
			player.PlayUntil(70000);
			// Many splices a second may be off by 0.4 millionths of the frequency together.
			bool const isFast = ratio < 0.6f && frequency > 5000.0;
			EXPECT_LT(GetResidue(player.GetOutput()[1], frequency), isFast ? -44.0 : -50.0);
		}
	}
}

// Without room to spare for the source, as at a speed that stays.
TEST(OmegaEngine, KeepsTonesSmoothUpToTheirEndAtEveryRate)
{
	for (float const rate : {8000.0f, 22050.0f, 48000.0f})
	{
		for (double const frequency : {60.0, 120.0, 440.0})
		{
			for (float const ratio : {0.1f, 0.25f, 0.5f, 0.8f, 2.0f, 10.0f})
			{
				SCOPED_TRACE(testing::Message() << rate << ", " << frequency << " Hz, ratio " << ratio);
				double const angle = 2.0 * std::numbers::pi * frequency / static_cast<double>(rate);
				auto const steady = static_cast<std::size_t>(rate);
				auto const length = static_cast<std::size_t>(rate * (1.0f + 0.5f * ratio));
				auto const end = static_cast<long long>(static_cast<float>(length) / ratio);
				auto const tone = [&](unsigned, long long inPosition)
				{
					return inPosition < end
							   ? static_cast<float>(0.5 * std::sin(angle * static_cast<double>(inPosition)))
							   : 0.0f;
				};
				OmegaLimits const limits{ratio, ratio, 0.0f, 0.0f};
				std::mt19937 random(1);
				Player player(1, tone, OmegaEngineKind::kSplice, rate, limits);
				Player parts(1, tone, OmegaEngineKind::kSplice, rate, limits);
				player.Set(ratio);
				parts.Set(ratio);
				player.PlayUntil(length);
				parts.PlayUntil(length, [&] { return random() % kBlock + 1; });
				std::vector<float> const& output = player.GetOutput()[0];
				EXPECT_TRUE(SameBits(output, parts.GetOutput()[0]));
				double step = 0.0;
				for (std::size_t i = 1; i < steady; ++i)
				{
					step = std::max(step, static_cast<double>(std::fabs(output[i] - output[i - 1])));
				}
				EXPECT_LT(step, 2.0 * 0.5 * angle);
				float const lowest = *std::min_element(output.begin(), output.end());
				EXPECT_LT(std::max(-lowest, *std::max_element(output.begin(), output.end())), 0.51f);
			}
		}
	}
}

// What lies within 8 Hz of the frequencies against all the rest, in decibels.
double GetPurity(std::vector<float> const& inSound, std::vector<double> const& inFrequencies, float inRate)
{
	constexpr unsigned size = 65536;
	std::vector<float> spectrum(inSound.end() - size, inSound.end());
	for (unsigned i = 0; i < size; ++i)
	{
		double const sine = std::sin(std::numbers::pi * i / size);
		spectrum[i] *= static_cast<float>(std::pow(sine, 6.0));
	}
	dsp::FFT(size).Forward(spectrum.data());
	double inside = 0.0;
	double outside = 0.0;
	for (unsigned bin = 1; bin < size / 2; ++bin)
	{
		double const frequency = bin * static_cast<double>(inRate) / size;
		bool const isInside = std::any_of(inFrequencies.begin(), inFrequencies.end(),
			[&](double inFrequency) { return std::fabs(frequency - inFrequency) < 8.0; });
		(isInside ? inside : outside) += std::pow(static_cast<double>(spectrum[bin]), 2.0) +
										 std::pow(static_cast<double>(spectrum[size - bin]), 2.0);
	}
	return 10.0 * std::log10(inside / outside);
}

TEST(OmegaEngine, KeepsChordsPure)
{
	std::vector<double> const minor{261.626, 311.127, 391.995, 523.251};
	for (float const rate : {48000.0f, 44100.0f, 22050.0f, 8000.0f})
	{
		for (auto const& chord : {kMajor, minor})
		{
			for (float const ratio : {0.5f, 0.8f, 0.95f, 1.25f, 2.0f})
			{
				SCOPED_TRACE(testing::Message() << rate << ", ratio " << ratio);
				OmegaLimits const limits{ratio, ratio, 0.0f, 0.0f};
				Player player(1, MakeChord(chord, 0.4, rate), OmegaEngineKind::kSplice, rate, limits);
				player.Set(ratio);
				player.PlayUntil(100000);
				EXPECT_GT(GetPurity(player.GetOutput()[0], chord, rate), 65.0);
			}
		}
	}
}

TEST(OmegaEngine, ConvertsExactlyAsATapeDoes)
{
	Player player(1, [](unsigned, long long inPosition)
		{ return static_cast<float>(ToneAt(1000.0, static_cast<double>(inPosition))); });
	double source = 0.0;
	std::vector<double> places;
	for (float const ratio : {1.0f, 0.5f, 0.77f, 3.0f, 1.0f, 9.0f, 0.12f})
	{
		player.Set(ratio, static_cast<float>(12.0 * std::log2(1.0 / static_cast<double>(ratio))));
		player.PlayUntil(player.GetOutput()[0].size() + 3000);
		for (unsigned i = 0; i < 3000; ++i)
		{
			places.push_back(source + i / static_cast<double>(ratio));
		}
		source += 3000.0 / static_cast<double>(ratio);
	}
	for (unsigned i = 100; i < places.size(); ++i)
	{
		ASSERT_NEAR(static_cast<double>(player.GetOutput()[0][i]), ToneAt(1000.0, places[i]), 3e-5) << i;
	}
}

TEST(OmegaEngine, PlaysEachOnsetOnceAndInTime)
{
	struct Case
	{
		SampleAt mBackground;
		long long mSpacing;
	};
	// Over a soft tone, and over a chord that stays long enough to count as steady.
	for (Case const& test : {Case{MakeChord({200.0}, 0.01), 12000}, Case{MakeChord(kMajor, 0.02), 48000}})
	{
		auto const clicks = [&](unsigned inChannel, long long inPosition)
		{
			bool const isClick = inPosition > 0 && inPosition % test.mSpacing == 0;
			return isClick ? 1.0f : test.mBackground(inChannel, inPosition);
		};
		auto const spacing = static_cast<double>(test.mSpacing);
		for (float const ratio : {0.5f, 0.8f, 1.1f, 1.25f, 2.0f, 4.0f})
		{
			SCOPED_TRACE(testing::Message() << test.mSpacing << ", ratio " << ratio);
			Player player(1, clicks);
			player.Set(ratio);
			auto const length = static_cast<std::size_t>(10.0 * spacing);
			player.PlayUntil(length);
			std::vector<double> found;
			for (std::size_t i = 0; i < length; ++i)
			{
				if (std::fabs(player.GetOutput()[0][i]) > 0.1f)
				{
					found.push_back(static_cast<double>(i) / static_cast<double>(ratio));
				}
			}
			ASSERT_EQ(found.size(), static_cast<std::size_t>(9.999 / static_cast<double>(ratio)));
			for (std::size_t i = 0; i < found.size(); ++i)
			{
				// Half a millisecond of the source or of the output.
				EXPECT_NEAR(found[i], spacing * static_cast<double>(i + 1),
					26.0 / static_cast<double>(std::min(ratio, 1.0f)));
			}
		}
	}
}

TEST(OmegaEngine, CutsAllChannelsAtTheSamePlaces)
{
	auto const noise = [](unsigned, long long inPosition) { return Noise(0, inPosition / 3); };
	for (SampleAt const& sound : {SampleAt(noise), MakeChord(kMajor)})
	{
		// The second channel is the first with opposite phase, the third all of it at half the level.
		Player player(3,
			[&](unsigned inChannel, long long inPosition) {
				return sound(0, inPosition) * (inChannel == 0 ? 1.0f : inChannel == 1 ? -1.0f : 0.5f);
			});
		for (float const ratio : {0.7f, 1.4f, 0.3f})
		{
			player.Set(ratio, 3.0f);
			player.PlayUntil(player.GetOutput()[0].size() + 30000);
		}
		Sound const& output = player.GetOutput();
		for (std::size_t i = 0; i < output[0].size(); ++i)
		{
			ASSERT_EQ(output[1][i], -output[0][i]) << i;
			ASSERT_EQ(output[2][i], 0.5f * output[0][i]) << i;
		}
	}
}

TEST(OmegaEngine, StartsAfreshWhereTheSourceGoesOn)
{
	Player player(1, [](unsigned, long long) { return 1.0f; });
	player.Set(0.6f);
	player.PlayUntil(20000);
	OmegaEngine& engine = player.GetEngine();
	engine.SetRatio(1.0f, 1.0f);
	engine.SetSourceRemaining(3);
	std::vector<float> input(engine.GetInputNeeded(kBlock));
	ASSERT_GE(input.size(), kBlock);
	std::iota(input.begin(), input.end(), 2.0f);
	std::vector<float> output(kBlock);
	float const* const inputs[] = {input.data()};
	float* const outputs[] = {output.data()};
	engine.Process(kBlock, inputs, outputs);
	EXPECT_TRUE(SameBits(output, std::vector<float>(input.begin(), input.begin() + kBlock)));
}

TEST(OmegaEngine, RefusesWhatItCannotDo)
{
	struct Case
	{
		char const* mName;
		float mRate;
		unsigned mChannels;
		unsigned mBlock;
		float mMinRatio;
		float mMaxRatio;
		float mMinPitch;
		float mMaxPitch;
	};
	constexpr float none = std::numeric_limits<float>::quiet_NaN();
	Case const cases[] = {
		{"no rate", 0.0f, 1, 64, 0.1f, 10.0f, 0.0f, 0.0f},
		{"a rate that is no number", none, 1, 64, 0.1f, 10.0f, 0.0f, 0.0f},
		{"no channel", kRate, 0, 64, 0.1f, 10.0f, 0.0f, 0.0f},
		{"too many channels", kRate, 65, 64, 0.1f, 10.0f, 0.0f, 0.0f},
		{"no block", kRate, 1, 0, 0.1f, 10.0f, 0.0f, 0.0f},
		{"a ratio of 0", kRate, 1, 64, 0.0f, 10.0f, 0.0f, 0.0f},
		{"ratios the wrong way round", kRate, 1, 64, 2.0f, 1.0f, 0.0f, 0.0f},
		{"a ratio that is no number", kRate, 1, 64, none, 1.0f, 0.0f, 0.0f},
		{"pitches the wrong way round", kRate, 1, 64, 0.1f, 10.0f, 1.0f, 0.0f},
		{"a pitch beyond all", kRate, 1, 64, 0.1f, 10.0f, 0.0f, 1e9f},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		OmegaEngine* engine = nullptr;
		EXPECT_EQ(OmegaEngine::Create(&engine, test.mRate, test.mChannels, test.mBlock, 0.0f, test.mMinRatio,
					  test.mMaxRatio, test.mMinPitch, test.mMaxPitch),
			zorvcore::eInvalidArgument);
		EXPECT_EQ(engine, nullptr);
	}
	OmegaEngineKind const former = GetOmegaEngineKind();
	EXPECT_FALSE(SetOmegaEngineKind(static_cast<OmegaEngineKind>(7)));
	EXPECT_EQ(GetOmegaEngineKind(), former);
	OmegaEngine* engine = nullptr;
	EXPECT_EQ(OmegaEngine::CreateOfKind(&engine, static_cast<OmegaEngineKind>(7), kRate, 1, 64, {}),
		zorvcore::eInvalidArgument);
	EXPECT_EQ(engine, nullptr);
	OmegaEngine::Destroy(nullptr);
}

} // namespace OmegaEngineTest
