#include "zorvaudiodsp/ambi/AmbisonicsBinauralizer.h"
#include "Support/Common.h"
#include "Support/SameBits.h"
#include "zorvaudiodsp/FFT.h"
#include "zorvcore/config/Exceptions.h"

#include <numbers>

namespace dsp::ambi::AmbisonicsBinauralizerTest
{

constexpr unsigned kRate = 48000;
using Channels = std::vector<std::vector<float>>;

Channels MakeNoise(unsigned inChannels, unsigned inFrames, unsigned inSeed)
{
	std::mt19937 random(inSeed);
	std::uniform_real_distribution<float> samples(-1.0f, 1.0f);
	Channels noise(inChannels, std::vector<float>(inFrames));
	for (auto& channel : noise)
	{
		std::generate(channel.begin(), channel.end(), [&] { return samples(random); });
	}
	return noise;
}

constexpr FieldGains kComponents[] = {{.mW = 1.0f}, {.mY = 1.0f}, {.mZ = 1.0f}, {.mX = 1.0f}};

// Random responses with a fading tail, through which the field is heard by the given gains.
struct Listener
{
	Listener(unsigned inTaps, std::vector<FieldGains> inGains, unsigned inRate = kRate)
		: mGains(std::move(inGains)),
		  mSet{inRate, inTaps},
		  mData(MakeNoise(2, inTaps * static_cast<unsigned>(mGains.size()), inTaps))
	{
	}

	void LoadInto(AmbisonicsBinauralizer& outBinauralizer) const
	{
		outBinauralizer.Load({static_cast<unsigned>(mGains.size()), mGains.data(), 1, &mSet}, mData[0].data(),
			mData[1].data());
	}

	// The sum of all responses to all components, in double precision.
	std::vector<double> Convolve(unsigned inEar, Channels const& inField) const
	{
		std::vector<double> ear(inField[0].size());
		for (std::size_t response = 0; response < mGains.size(); ++response)
		{
			FieldGains const& gains = mGains[response];
			for (std::size_t i = 0; i < ear.size(); ++i)
			{
				double const heard = double(gains.mW) * inField[0][i] + double(gains.mY) * inField[1][i] +
									 double(gains.mZ) * inField[2][i] + double(gains.mX) * inField[3][i];
				for (std::size_t tap = 0; tap < mSet.mNumTaps && i + tap < ear.size(); ++tap)
				{
					ear[i + tap] += heard * mData[inEar][response * mSet.mNumTaps + tap];
				}
			}
		}
		return ear;
	}

	std::vector<FieldGains> mGains;
	ResponseSet mSet;
	Channels mData;
};

std::unique_ptr<AmbisonicsBinauralizer> Make(Listener const& inListener, unsigned inRate = kRate)
{
	auto binauralizer =
		std::make_unique<AmbisonicsBinauralizer>(inRate, 512, 1, ChannelOrdering::kACN, Normalization::kSN3D);
	inListener.LoadInto(*binauralizer);
	return binauralizer;
}

// inGetBlock: the frames of the next block; inGetAngle: the orientation at its first frame.
template <class GetBlock, class GetAngle>
Channels Render(
	AmbisonicsBinauralizer& ioBinauralizer, Channels const& inField, GetBlock inGetBlock, GetAngle inGetAngle)
{
	auto const frames = static_cast<unsigned>(inField[0].size());
	Channels ears(2, std::vector<float>(frames, 4711.0f));
	unsigned count = 0;
	for (unsigned done = 0; done < frames; done += count)
	{
		count = std::min(static_cast<unsigned>(inGetBlock()), frames - done);
		std::vector<float const*> inputs;
		for (auto const& channel : inField)
		{
			inputs.push_back(channel.data() + done);
		}
		float* const outputs[] = {ears[0].data() + done, ears[1].data() + done};
		ioBinauralizer.Process(inGetAngle(done), count, inputs.size(), 2, inputs.data(), outputs);
	}
	return ears;
}

Channels RenderAtRest(Listener const& inListener, Channels const& inField, EulerAngle const& inAngle = {})
{
	return Render(
		*Make(inListener), inField, [] { return 512u; }, [&](unsigned) { return inAngle; });
}

TEST(AmbisonicsBinauralizer, HearsWhatDirectConvolutionGives)
{
	std::vector<FieldGains> const components(std::begin(kComponents), std::end(kComponents));
	std::vector<FieldGains> const speakers = {
		{0.4f, 0.3f, -0.2f, 0.5f}, {0.4f, -0.3f, 0.2f, 0.5f}, {0.5f, 0.0f, 0.1f, -0.6f}};
	Channels const field = MakeNoise(4, 1500, 1);
	for (unsigned const taps : {1u, 63u, 64u, 65u, 128u, 130u, 257u})
	{
		for (auto const& gains : {components, speakers})
		{
			SCOPED_TRACE(std::to_string(taps) + " taps, " + std::to_string(gains.size()) + " responses");
			Listener const listener(taps, gains);
			Channels const ears = RenderAtRest(listener, field);
			for (unsigned ear = 0; ear < 2; ++ear)
			{
				std::vector<double> const wanted = listener.Convolve(ear, field);
				double worst = 0.0;
				for (std::size_t i = 0; i < wanted.size(); ++i)
				{
					worst = std::max(worst, std::fabs(wanted[i] - ears[ear][i]));
				}
				EXPECT_LT(worst, 1e-6 * (10 + taps));
			}
		}
	}
}

TEST(AmbisonicsBinauralizer, AnyCutAndAnyRestartGivesTheSameBits)
{
	Listener const listener(150, {std::begin(kComponents), std::end(kComponents)});
	Channels const field = MakeNoise(4, 2000, 2);
	EulerAngle const angle{0, 33.0f, -20.0f, 7.0f, true};
	Channels const whole = RenderAtRest(listener, field, angle);
	auto const binauralizer = Make(listener);
	std::mt19937 random(3);
	for (unsigned const largest : {1u, 7u, 33u, 700u})
	{
		binauralizer->Reset(kRate, 512);
		auto const cut = Render(
			*binauralizer, field, [&] { return 1 + random() % largest; }, [&](unsigned) { return angle; });
		EXPECT_TRUE(SameBits(cut[0], whole[0]) && SameBits(cut[1], whole[1])) << largest;
	}
}

// The components of a plane wave.
Channels Encode(std::vector<float> const& inSound, double inX, double inY, double inZ)
{
	Channels field;
	for (double const gain : {1.0, inY, inZ, inX})
	{
		std::vector<float> component(inSound.size());
		std::transform(inSound.begin(), inSound.end(), component.begin(),
			[gain](float inSample) { return static_cast<float>(gain * inSample); });
		field.push_back(component);
	}
	return field;
}

TEST(AmbisonicsBinauralizer, TurnedHeadHearsTheTurnedScene)
{
	double const half = std::sqrt(0.5);
	struct Case
	{
		char const* mName;
		EulerAngle mHead;
		std::array<double, 3> mSound;
		// Where the sound is for the head.
		std::array<double, 3> mHeard;
	};
	// X is in front, Y on the left and Z above.
	Case const cases[] = {
		{"left, looked at", {0, 90, 0, 0, true}, {0, 1, 0}, {1, 0, 0}},
		{"in front, from the left", {0, 90, 0, 0, true}, {1, 0, 0}, {0, -1, 0}},
		{"above, looked at", {0, 0, 90, 0, true}, {0, 0, 1}, {1, 0, 0}},
		{"above, on the right ear's side", {0, 0, 0, 90, true}, {0, 0, 1}, {0, 1, 0}},
		{"left, lying on the right ear", {0, 0, 0, 90, true}, {0, 1, 0}, {0, 0, -1}},
		{"behind, after half a turn in radians", {0, float(std::numbers::pi), 0, 0, false}, {-1, 0, 0},
			{1, 0, 0}},
		{"yaw before pitch", {0, 90, 45, 0, true}, {0, half, half}, {1, 0, 0}},
		{"looking up, yaw and roll add up", {0, 30, 90, 60, true}, {1, 0, 0}, {0, -1, 0}},
		{"no number counts as 0", {0, NAN, INFINITY, 90, true}, {0, 0, 1}, {0, 1, 0}},
	};
	Listener const listener(64, {std::begin(kComponents), std::end(kComponents)});
	std::vector<float> const sound = MakeNoise(1, 600, 4)[0];
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		auto const [x, y, z] = test.mSound;
		auto const [headX, headY, headZ] = test.mHeard;
		Channels const turned = RenderAtRest(listener, Encode(sound, x, y, z), test.mHead);
		Channels const wanted = RenderAtRest(listener, Encode(sound, headX, headY, headZ));
		for (unsigned i = 0; i < sound.size(); ++i)
		{
			ASSERT_NEAR(turned[0][i], wanted[0][i], 1e-5);
			ASSERT_NEAR(turned[1][i], wanted[1][i], 1e-5);
		}
	}
}

// The strongest spectral line from 5 kHz on, over the strongest one, in decibels.
double GetHighest(std::vector<float> const& inSignal)
{
	unsigned const size = 32768;
	std::vector<float> spectrum(inSignal.end() - size, inSignal.end());
	for (unsigned i = 0; i < size; ++i)
	{
		// A Blackman-Harris window, whose own lines are below -92 dB and fall off with frequency.
		double const turn = 2.0 * std::numbers::pi * i / size;
		spectrum[i] *= static_cast<float>(
			0.35875 - 0.48829 * std::cos(turn) + 0.14128 * std::cos(2 * turn) - 0.01168 * std::cos(3 * turn));
	}
	FFT(size).Forward(spectrum.data());
	double strongest = 0.0;
	double high = 0.0;
	for (unsigned k = 1; k < size / 2; ++k)
	{
		double const line = std::hypot(spectrum[k], spectrum[size - k]);
		strongest = std::max(strongest, line);
		high = k * double(kRate) / size >= 5000.0 ? std::max(high, line) : high;
	}
	return 20.0 * std::log10(high / strongest);
}

TEST(AmbisonicsBinauralizer, TurningHeadHearsNoClicks)
{
	std::vector<float> tone(kRate);
	for (unsigned i = 0; i < tone.size(); ++i)
	{
		tone[i] = static_cast<float>(std::sin(2.0 * std::numbers::pi * 500.0 * i / kRate));
	}
	Listener const listener(1, {std::begin(kComponents), std::end(kComponents)});
	Channels const field = Encode(tone, 0.8, 0.6, 0.0);
	auto const binauralizer = Make(listener);
	auto const turn = [](unsigned inFrame) {
		return EulerAngle{
			0, 200.0f * static_cast<float>(inFrame) / static_cast<float>(kRate), 0.0f, 0.0f, true};
	};
	Channels const turning = Render(
		*binauralizer, field, [] { return 480u; }, turn);
	EXPECT_LT(GetHighest(turning[0]), -110.0);
	EXPECT_LT(GetHighest(turning[1]), -110.0);
	// The measure hears a head that jumps at each block.
	Channels const jumping = Render(
		*binauralizer, field, [] { return 480u; },
		[&](unsigned inFrame)
		{
			binauralizer->Reset(kRate, 512);
			return turn(inFrame);
		});
	EXPECT_GT(GetHighest(jumping[0]), -100.0);
}

TEST(AmbisonicsBinauralizer, MovesInAStraightLineOverOneBlock)
{
	Listener const listener(1, {std::begin(kComponents), std::end(kComponents)});
	Channels const field = Encode(std::vector<float>(1000, 1.0f), 1.0, 0.0, 0.0);
	auto const ears = Render(
		*Make(listener), field, [] { return 500u; },
		[](unsigned inFrame) {
			return EulerAngle{0, inFrame == 0 ? 0.0f : 90.0f, 0, 0, true};
		});
	float const w = listener.mData[0][0];
	float const y = listener.mData[0][1];
	float const x = listener.mData[0][3];
	for (unsigned const frame : {0u, 499u, 500u, 501u, 749u, 998u, 999u})
	{
		float const way = frame < 500 ? 0.0f : static_cast<float>(frame - 499) / 500.0f;
		EXPECT_NEAR(ears[0][frame], w + x * (1.0f - way) - y * way, 1e-5) << frame;
	}
}

TEST(AmbisonicsBinauralizer, OtherRatesHearTheSameSpectrum)
{
	// A bell of half a millisecond, which every rate can hold.
	unsigned const taps = 300;
	Listener listener(taps, {kComponents[0]}, 96000);
	auto const bell = [](double inSeconds)
	{ return std::exp(-std::pow((inSeconds - 0.0015) / 0.00015, 2.0)); };
	for (unsigned i = 0; i < taps; ++i)
	{
		listener.mData[0][i] = listener.mData[1][i] = static_cast<float>(bell(i / 96000.0));
	}
	for (unsigned const rate : {32000u, 44100u, 96000u, 192000u})
	{
		Channels field(4, std::vector<float>(rate / 200));
		field[0][0] = 1.0f;
		Channels const ears = Render(
			*Make(listener, rate), field, [] { return 512u; }, [](unsigned) { return EulerAngle{}; });
		double worst = 0.0;
		for (unsigned i = 0; i < ears[0].size(); ++i)
		{
			worst = std::max(worst, std::fabs(ears[0][i] * (rate / 96000.0) - bell(double(i) / rate)));
		}
		EXPECT_LT(worst, 1e-3) << rate;
	}
}

TEST(AmbisonicsBinauralizer, ListensToWhatIsThere)
{
	Listener const listener(40, {std::begin(kComponents), std::end(kComponents)});
	Channels field = MakeNoise(6, 300, 5);
	Channels const six = RenderAtRest(listener, field);
	field.resize(4);
	EXPECT_EQ(RenderAtRest(listener, field), six);
	std::fill(field[2].begin(), field[2].end(), 0.0f);
	std::fill(field[3].begin(), field[3].end(), 0.0f);
	Channels const four = RenderAtRest(listener, field);
	field.resize(2);
	EXPECT_EQ(RenderAtRest(listener, field), four);

	// Outputs may be the inputs.
	Channels inPlace = field;
	float* const pointers[] = {inPlace[0].data(), inPlace[1].data()};
	Make(listener)->Process({}, 300, 2, 2, pointers, pointers);
	EXPECT_EQ(inPlace, four);

	Channels const silence(2, std::vector<float>(300));
	auto const play = [&](AmbisonicsBinauralizer& ioBinauralizer)
	{
		return Render(
			ioBinauralizer, field, [] { return 64u; }, [](unsigned) { return EulerAngle{}; });
	};
	auto const binauralizer = Make(listener);
	binauralizer->Unload();
	EXPECT_EQ(play(*binauralizer), silence);
	listener.LoadInto(*binauralizer);
	binauralizer->Reset(44100, 512);
	EXPECT_EQ(play(*binauralizer), silence);
	EXPECT_EQ(play(*Make(listener, 999)), silence);
	EXPECT_EQ(play(*Make(Listener(0, {kComponents[0]}))), silence);
}

TEST(AmbisonicsBinauralizer, ForgetsWhatIsNotANumber)
{
	Listener const listener(300, {std::begin(kComponents), std::end(kComponents)});
	Channels field = MakeNoise(4, 2000, 6);
	Channels const clean = RenderAtRest(listener, field);
	constexpr unsigned kPlace = 777;
	field[1][kPlace] = std::numeric_limits<float>::quiet_NaN();
	Channels const ears = RenderAtRest(listener, field);
	unsigned const settling = AmbisonicsBinauralizer::GetSettlingFrames(
		{static_cast<unsigned>(listener.mGains.size()), listener.mGains.data(), 1, &listener.mSet}, kRate);
	for (unsigned ear = 0; ear < 2; ++ear)
	{
		for (unsigned i = 0; i < 2000; ++i)
		{
			bool const isAffected = i >= kPlace && i < kPlace + settling;
			EXPECT_TRUE(isAffected || ears[ear][i] == clean[ear][i]) << i;
		}
		EXPECT_TRUE(std::isnan(ears[ear][kPlace]));
	}
}

TEST(AmbisonicsBinauralizer, RefusesOtherFields)
{
	auto const make = [](unsigned inOrder, unsigned inOrdering, unsigned inScale)
	{
		AmbisonicsBinauralizer const binauralizer(kRate, 512, inOrder,
			static_cast<ChannelOrdering>(inOrdering), static_cast<Normalization>(inScale));
	};
	EXPECT_NO_THROW(make(1, 2, 1));
	EXPECT_THROW(make(2, 2, 1), zorvcore::config::zorv_exception);
	EXPECT_THROW(make(1, 1, 1), zorvcore::config::zorv_exception);
	EXPECT_THROW(make(1, 2, 0), zorvcore::config::zorv_exception);
}

} // namespace dsp::ambi::AmbisonicsBinauralizerTest
