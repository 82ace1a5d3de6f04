#include "../TimelineJson.h"
#include "BinauralRenders.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "zorvaudiofilters/ambisonics/binauralizer/HRIR.h"

#include <string>

namespace SonaroHost::Testing::BinauralRenderTest
{

using testing::HasSubstr;

constexpr std::int64_t kFrames = 24000;

// How many samples the second ear hears the same later than the first one, by the peak of their correlation.
int FindLag(Sound const& inEars)
{
	constexpr int kMost = 60;
	// Long enough for a low-pass at about 700 Hz: above, the times between ears are no time.
	constexpr int kWidth = 60;
	std::int64_t const frames = inEars.GetFrames() - kWidth;
	std::vector<std::array<double, 2>> low(static_cast<std::size_t>(frames));
	for (std::int64_t i = 0; i < frames; ++i)
	{
		for (int tap = 0; tap < kWidth; ++tap)
		{
			for (std::size_t ear = 0; ear < 2; ++ear)
			{
				low[static_cast<std::size_t>(i)][ear] +=
					static_cast<double>(inEars.mSamples[static_cast<std::size_t>(2 * (i + tap)) + ear]);
			}
		}
	}
	int best = 0;
	double most = 0.0;
	for (int lag = -kMost; lag <= kMost; ++lag)
	{
		double sum = 0.0;
		for (std::int64_t i = kMost; i < frames - kMost; ++i)
		{
			sum += low[static_cast<std::size_t>(i)][0] * low[static_cast<std::size_t>(i + lag)][1];
		}
		best = sum > most ? lag : best;
		most = std::max(most, sum);
	}
	return best;
}

double GetLevelDifference(Sound const& inEars)
{
	double left = 0.0;
	double right = 0.0;
	for (std::size_t i = 0; i < inEars.mSamples.size(); i += 2)
	{
		left += std::pow(static_cast<double>(inEars.mSamples[i]), 2);
		right += std::pow(static_cast<double>(inEars.mSamples[i + 1]), 2);
	}
	return 10.0 * std::log10(left / right);
}

class BinauralRenderTest : public BinauralRenders
{
};

TEST_F(BinauralRenderTest, SoundFromOneSideIsLouderAndEarlierAtThatEar)
{
	Sound const noise = MakeNoise(1, kFrames);
	for (double const side : {1.0, -1.0})
	{
		SCOPED_TRACE(side);
		Sound const ears = Hear(MakeWave(noise, {90.0 * side, 0.0}), "ambisonic1");
		EXPECT_GT(GetLevelDifference(ears) * side, 6.0);
		// A head is about 0.65 milliseconds wide at low frequencies: 31 samples.
		EXPECT_NEAR(FindLag(ears) * side, 31, 8);
	}
	Sound stereo{2, kEarRate, {}};
	for (float const sample : noise.mSamples)
	{
		stereo.mSamples.insert(stereo.mSamples.end(), {sample, 0.0f});
	}
	Sound const ears = Hear(stereo, "stereo");
	EXPECT_GT(GetLevelDifference(ears), 3.0);
	EXPECT_GT(FindLag(ears), 5);
	EXPECT_NEAR(GetLevelDifference(Hear(noise, "mono")), 0.0, 1e-6);
}

// Against a plain convolution in double precision with the responses of the built-in ears.
TEST_F(BinauralRenderTest, IsTheConvolutionWithTheResponsesOfTheEars)
{
	auto const ears = zorvaudiofilters::ambisonics::binauralizer::GetDefaultHRIR();
	dsp::ambi::ResponseDescriptor const& descriptor = ears->GetDescriptor();
	float const* data[] = {ears->GetLeftData(), ears->GetRightData()};
	unsigned set = 0;
	for (; descriptor.mSets[set].mSampleRate != kEarRate; ++set)
	{
		for (float const*& responses : data)
		{
			responses += std::size_t{descriptor.mNumResponses} * descriptor.mSets[set].mNumTaps;
		}
	}
	std::size_t const taps = descriptor.mSets[set].mNumTaps;
	constexpr std::int64_t kShort = 2000;
	Sound const field = MakeNoise(4, kShort);
	Sound const heard = Hear(field, "ambisonic1");
	for (std::size_t i = 0; i < static_cast<std::size_t>(kShort); ++i)
	{
		for (std::size_t ear = 0; ear < 2; ++ear)
		{
			double sum = 0.0;
			for (std::size_t tap = 0; tap < taps && tap <= i; ++tap)
			{
				for (std::size_t component = 0; component < 4; ++component)
				{
					sum += static_cast<double>(data[ear][component * taps + tap]) *
						   static_cast<double>(field.mSamples[4 * (i - tap) + component]);
				}
			}
			ASSERT_NEAR(static_cast<double>(heard.mSamples[2 * i + ear]), sum, 1e-6) << i;
		}
	}
}

TEST_F(BinauralRenderTest, TurningTheHeadIsTurningTheSoundTheOtherWay)
{
	Sound const noise = MakeNoise(1, kFrames);
	struct Case
	{
		HeadAngles mHead;
		Direction mHeard;
		Direction mTurned;
	};
	Case const cases[] = {
		{{90.0f, 0.0f, 0.0f}, {30.0, 20.0}, {-60.0, 20.0}},
		{{-120.0f, 0.0f, 0.0f}, {30.0, -40.0}, {150.0, -40.0}},
		// Looking up, what was in front is below; what was above is in front.
		{{0.0f, 90.0f, 0.0f}, {0.0, 0.0}, {0.0, -90.0}},
		{{0.0f, 30.0f, 0.0f}, {0.0, 90.0}, {0.0, 60.0}},
		// With the right ear down, the head's top points to the right: what was left is below.
		{{0.0f, 0.0f, 90.0f}, {90.0, 0.0}, {0.0, -90.0}},
		{{90.0f, 0.0f, 90.0f}, {-180.0, 0.0}, {0.0, -90.0}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(
			testing::Message() << test.mHead.mYaw << ", " << test.mHead.mPitch << ", " << test.mHead.mRoll);
		EXPECT_LT(FindLargestDifference(Hear(MakeWave(noise, test.mHeard), "ambisonic1", test.mHead),
					  Hear(MakeWave(noise, test.mTurned), "ambisonic1")),
			1e-5);
	}
}

// Each channel alone sounds as a plane wave from where its loudspeaker stands.
TEST_F(BinauralRenderTest, ChannelsAreHeardFromTheirLoudspeakers)
{
	constexpr double kNowhere = 1000.0;
	struct Case
	{
		char const* mLayout;
		std::vector<double> mAzimuths;
	};
	Case const cases[] = {
		{"mono", {0.0}},
		{"stereo", {30.0, -30.0}},
		{"5.1", {30.0, -30.0, 0.0, kNowhere, 110.0, -110.0}},
		{"8", {30.0, -30.0, 0.0, kNowhere, 135.0, -135.0, 90.0, -90.0}},
	};
	constexpr std::int64_t kShort = 2000;
	Sound const noise = MakeNoise(1, kShort);
	for (Case const& test : cases)
	{
		for (std::size_t channel = 0; channel < test.mAzimuths.size(); ++channel)
		{
			SCOPED_TRACE(testing::Message() << test.mLayout << ", channel " << channel);
			Sound speaker{static_cast<int>(test.mAzimuths.size()), kEarRate, {}};
			speaker.mSamples.resize(static_cast<std::size_t>(kShort) * test.mAzimuths.size());
			for (std::size_t i = 0; i < noise.mSamples.size(); ++i)
			{
				speaker.mSamples[i * test.mAzimuths.size() + channel] = noise.mSamples[i];
			}
			Sound wave = MakeWave(noise, {test.mAzimuths[channel], 0.0});
			for (std::size_t i = 0; test.mAzimuths[channel] == kNowhere && i < wave.mSamples.size(); ++i)
			{
				wave.mSamples[i] = i % 4 == 0 ? wave.mSamples[i] : 0.0f;
			}
			EXPECT_LT(FindLargestDifference(Hear(speaker, test.mLayout), Hear(wave, "ambisonic1")), 1e-6);
		}
	}
}

TEST_F(BinauralRenderTest, BlocksThreadsAndPlaybackChangeNoBit)
{
	WriteInput(MakeNoise(6, kFrames));
	ClipRenderRequest request = MakeBinauralRequest("5.1", {50.0f, -20.0f, 10.0f});
	Sound const whole = RenderInBlocks(request);
	request.mJobs = 4;
	for (unsigned const block : {64u, 100u, 1000u})
	{
		request.mBlockFrames = block;
		EXPECT_TRUE(SameBits(Render(request), whole)) << block;
	}
	request.mJobs = 1;
	request.mAsPlayback = true;
	EXPECT_TRUE(SameBits(Render(request), whole));
}

// Ears hear forwards, whatever is played.
TEST_F(BinauralRenderTest, WhatIsPlayedBackwardsIsHeardSo)
{
	Sound const sound = MakeNoise(2, kFrames);
	Sound const expected = Hear(sound.Reversed(), "stereo");
	WriteInput(sound);
	ClipRenderRequest request = MakeBinauralRequest("stereo");
	request.mDirection = RenderDirection::kReverse;
	EXPECT_TRUE(SameBits(Render(request), expected));
}

TEST_F(BinauralRenderTest, WhatStandsNowhereIsRefused)
{
	struct Case
	{
		int mChannels;
		char const* mLayout;
		int mRate;
		char const* mReason;
	};
	Case const cases[] = {
		{3, "3", kEarRate, "3 channels cannot be rendered for two ears"},
		{4, "4", kEarRate, "use --layout with mono, stereo, 5.1, ambisonic1 or, for 7.1, 8"},
		{5, "ambisonic1", kEarRate, "5 channels cannot become ambisonic1, which has 4 channels"},
		{2, "stereo", 999, "999 Hz is out of range; use a sample rate of 1000 to 768000"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mReason);
		Sound sound = MakeNoise(test.mChannels, 100);
		sound.mSampleRate = test.mRate;
		WriteInput(sound);
		ExpectRefusal(MakeBinauralRequest(test.mLayout), test.mReason);
	}
}

class BinauralTimelineTest : public BinauralRenders
{
protected:
	Otio::TimelineRenderRequest MakeRequest(Json const& inTimeline) const
	{
		WriteBytes(mFolder / "edit.otio", inTimeline.dump());
		Otio::TimelineRenderRequest request;
		request.mInput = mFolder / "edit.otio";
		request.mOutput = mFolder / "mix.wav";
		request.mOptions.mListener = MakeListener({35.0f, 0.0f, 0.0f});
		return request;
	}
	Sound Render(Otio::TimelineRenderRequest const& inRequest) const
	{
		EXPECT_TRUE(Otio::TimelineRenderJob(inRequest).Run());
		return ReadSound(inRequest.mOutput);
	}
	// Of 5.1 beside mono, so that the mix is 5.1.
	Json WriteTimeline() const
	{
		WriteSound(mFolder / "film.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeNoise(6, 2 * kEarRate));
		WriteSound(mFolder / "voice.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeNoise(1, 2 * kEarRate, 2));
		return Timeline({Track("Film", {Clip("film", "film.wav", 0.0, 1.6)}),
							Track("Voice", {Gap(0.4), Clip("voice", "voice.wav", 0.2, 0.8)})},
			{Marker("middle", 0.72, 0.4)});
	}
};

TEST_F(BinauralTimelineTest, RangesAreCutsOfTheWhole)
{
	Otio::TimelineRenderRequest request = MakeRequest(WriteTimeline());
	Sound const whole = Render(request);
	EXPECT_EQ(whole.mChannels, 2);
	for (auto const& [range, first, frames] : {std::tuple("0.9..", 43200, 33600),
			 std::tuple("12345s+4321s", 12345, 4321), std::tuple("middle", 34560, 19200)})
	{
		for (unsigned const block : {77u, 4096u})
		{
			SCOPED_TRACE(testing::Message() << range << " in blocks of " << block);
			request.mRange = range;
			request.mBlockFrames = block;
			request.mJobs = 3;
			EXPECT_TRUE(SameBits(Render(request), whole.Cut(first, frames)));
		}
	}
}

TEST_F(BinauralTimelineTest, TheWidestLayoutStandsAroundTheListener)
{
	Otio::TimelineRenderRequest request = MakeRequest(WriteTimeline());
	Sound const surround = Render(request);
	request.mOptions.mLayout = ParseLayout("5.1");
	EXPECT_TRUE(SameBits(Render(request), surround));
	request.mOptions.mLayout = ParseLayout("stereo");
	EXPECT_GT(FindLargestDifference(Render(request), surround), 0.01);
	request.mOptions.mLayout = ParseLayout("3");
	EXPECT_THAT(GetRefusalOf([&] { Render(request); }, HostError::Kind::kRequest),
		HasSubstr("3 channels cannot be rendered for two ears"));
}

TEST_F(BinauralTimelineTest, StemsAreForTwoEarsAndAddUp)
{
	Otio::TimelineRenderRequest request = MakeRequest(WriteTimeline());
	Sound sum = Render(request);
	request.mStems = Otio::Stems::kTracks;
	request.mOutput = mFolder / "stems";
	EXPECT_TRUE(Otio::TimelineRenderJob(request).Run());
	Sound const film = ReadSound(mFolder / "stems/01 Film.wav");
	Sound const voice = ReadSound(mFolder / "stems/02 Voice.wav");
	ASSERT_EQ(voice.mChannels, 2);
	for (std::size_t i = 0; i < sum.mSamples.size(); ++i)
	{
		ASSERT_NEAR(film.mSamples[i] + voice.mSamples[i], sum.mSamples[i], 2e-6f);
	}
}

} // namespace SonaroHost::Testing::BinauralRenderTest
