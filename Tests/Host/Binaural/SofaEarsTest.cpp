#include "SonaroHost/Binaural/SofaEars.h"
#include "Binaural/Sofa/EarFit.h"
#include "BinauralRenders.h"

#include <numeric>
#include <string>

namespace SonaroHost::Testing::SofaEarsTest
{

using testing::HasSubstr;

// It comes with libmysofa: the ears of which the built-in ones are made.
constexpr char const* kKemar = "/usr/share/libmysofa/MIT_KEMAR_normal_pinna.sofa";

class SofaEarsTest : public BinauralRenders
{
protected:
	void SetUp() override
	{
		if (!std::filesystem::exists(kKemar))
		{
			GTEST_SKIP() << kKemar << " is not there";
		}
	}
	std::string GetRefusal(std::string const& inBytes) const
	{
		WriteBytes(mFolder / "ears.sofa", inBytes);
		return GetRefusalOf([&] { ReadSofaEars(mFolder / "ears.sofa"); }, HostError::Kind::kInput);
	}
};

double GetPower(Sound const& inSound)
{
	return std::inner_product(
		inSound.mSamples.begin(), inSound.mSamples.end(), inSound.mSamples.begin(), 0.0);
}

TEST_F(SofaEarsTest, MeasurementsOfTheBuiltInEarsSoundAsThese)
{
	auto const ears = ReadSofaEars(kKemar);
	EXPECT_EQ(ears->GetName(), "MIT_KEMAR_normal_pinna.sofa");
	constexpr std::int64_t kFrames = 6000;
	Sound noise = MakeNoise(4, kFrames);
	for (int const rate : {44100, 48000, 96000})
	{
		SCOPED_TRACE(rate);
		noise.mSampleRate = rate;
		Sound const builtIn = Hear(noise, "ambisonic1", {20.0f, 0.0f, 0.0f});
		ClipRenderRequest request = MakeBinauralRequest("ambisonic1");
		request.mListener = MakeListener({20.0f, 0.0f, 0.0f}, ears);
		Sound difference = rate == kEarRate ? RenderInBlocks(request) : Render(request);
		for (std::size_t i = 0; i < difference.mSamples.size(); ++i)
		{
			difference.mSamples[i] -= builtIn.mSamples[i];
		}
		// The built-in table takes the right ear for a mirrored left one, and ends above 19 kHz otherwise.
		EXPECT_LT(GetPower(difference), 0.01 * GetPower(builtIn));
	}
}

TEST_F(SofaEarsTest, FilesThatAreNoEarsAreRefused)
{
	std::string const whole = ReadBytes(kKemar);
	for (std::size_t const size : {whole.size() / 100, whole.size() / 2, whole.size() - 1})
	{
		EXPECT_THAT(GetRefusal(whole.substr(0, size)), HasSubstr("is not a SOFA file, or is damaged"));
	}
	EXPECT_THAT(GetRefusal("RIFF"), HasSubstr("is not a SOFA file"));
	std::string other = whole;
	std::size_t const place = other.find("SimpleFreeFieldHRIR");
	ASSERT_NE(place, std::string::npos);
	other.replace(place, 19, "SimpleFreeFieldHRTF");
	EXPECT_THAT(GetRefusal(other), HasSubstr("has the SOFA convention SimpleFreeFieldHRTF; choose a SOFA "
											 "file of the convention SimpleFreeFieldHRIR"));
	EXPECT_THAT(GetRefusalOf([&] { ReadSofaEars(mFolder / "no.sofa"); }, HostError::Kind::kInput),
		HasSubstr("no.sofa': does not exist"));
}

// Microphones of the first order are what the filters can be to the full: here cardioids that point to the sides and
// somewhat up, the right one softer.
TEST(EarFit, FindsEarsOfTheFirstOrderAsTheyAre)
{
	constexpr std::size_t kTaps = 64;
	constexpr std::size_t kImpulse = 20;
	constexpr double kRightGain = 0.5;
	EarMeasurements measurements{kEarRate, kTaps, {}, {}};
	constexpr std::array<std::array<double, 4>, 2> kPatterns{{{0.5, 0.4, 0.3, 0.0}, {0.5, -0.4, 0.3, 0.0}}};
	for (int elevation = -80; elevation <= 80; elevation += 20)
	{
		for (int azimuth = 0; azimuth < 360; azimuth += 20)
		{
			Direction const direction{static_cast<double>(azimuth), static_cast<double>(elevation)};
			auto const field = GetComponents(direction);
			double const degree = std::numbers::pi / 180.0;
			measurements.mDirections.push_back({azimuth * degree, elevation * degree, {}});
			for (std::size_t ear = 0; ear < 2; ++ear)
			{
				double const gain =
					std::inner_product(field.begin(), field.end(), kPatterns[ear].begin(), 0.0);
				measurements.mTaps.resize(measurements.mTaps.size() + kTaps);
				measurements.mTaps[measurements.mTaps.size() - kTaps + kImpulse] =
					static_cast<float>(ear == 0 ? gain : kRightGain * gain);
			}
		}
	}
	EarSpectra const spectra(measurements);
	std::size_t const taps = EarFit::CountTaps(kEarRate);
	Ears::Taps const filters = EarFit(spectra).MakeFilters(kEarRate, taps);
	// At a kilohertz, against W of the left ear.
	auto const get = [&](std::size_t inEar, std::size_t inComponent)
	{
		std::complex<double> sum;
		for (std::size_t tap = 0; tap < taps; ++tap)
		{
			sum += static_cast<double>(filters[inEar][inComponent * taps + tap]) *
				   std::polar(1.0, -2.0 * std::numbers::pi * 1000.0 * static_cast<double>(tap) / kEarRate);
		}
		return sum;
	};
	for (std::size_t ear = 0; ear < 2; ++ear)
	{
		for (std::size_t component = 0; component < 4; ++component)
		{
			SCOPED_TRACE(testing::Message() << "ear " << ear << ", component " << component);
			double const expected = 2.0 * kPatterns[ear][component] * (ear == 0 ? 1.0 : kRightGain);
			EXPECT_NEAR(std::abs(get(ear, component) / get(0, 0) - expected), 0.0, 0.01);
		}
	}
	for (auto& direction : measurements.mDirections)
	{
		direction.mElevation = 0.0;
	}
	EXPECT_LT(EarSpectra(measurements).GetSpread(), 1e-6);
}

} // namespace SonaroHost::Testing::SofaEarsTest
