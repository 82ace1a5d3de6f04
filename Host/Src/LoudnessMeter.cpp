#include "SonaroHost/LoudnessMeter.h"

#include "SonaroHost/HostError.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <numeric>
#include <string>

namespace SonaroHost
{

namespace
{

int GetWeighting(zorvmediatypes::AudioChannelDescription inChannel)
{
	using Place = zorvmediatypes::AudioChannelDescription;
	return inChannel == Place::kLeft            ? EBUR128_LEFT
		   : inChannel == Place::kRight         ? EBUR128_RIGHT
		   : inChannel == Place::kLowFrequency  ? EBUR128_UNUSED
		   : inChannel == Place::kLeftSurround  ? EBUR128_LEFT_SURROUND
		   : inChannel == Place::kRightSurround ? EBUR128_RIGHT_SURROUND
												: EBUR128_CENTER;
}

double GetLoudness(int (*inMeasure)(ebur128_state*, double*), ebur128_state* inState)
{
	double loudness = LoudnessReading::kSilent;
	return inMeasure(inState, &loudness) == EBUR128_SUCCESS ? loudness : LoudnessReading::kSilent;
}

} // namespace

double ToDecibels(double inAmplitude)
{
	return 20.0 * std::log10(inAmplitude);
}

struct LoudnessMeter::Measure
{
	explicit Measure(ebur128_state* inState)
		: mState(inState)
	{
	}
	~Measure() { ebur128_destroy(&mState); }
	Measure(Measure const&) = delete;
	Measure& operator=(Measure const&) = delete;

	ebur128_state* mState;
};

bool LoudnessMeter::CanMeasure(SN::AudioChannelLayout const& inLayout, double inSampleRate)
{
	constexpr double kLowestRate = 16.0;
	constexpr double kHighestRate = 2822400.0;
	return !inLayout.empty() && inLayout.size() <= dsp::AudioBuffer::kMaxChannels &&
		   inSampleRate >= kLowestRate && inSampleRate <= kHighestRate;
}

LoudnessMeter::LoudnessMeter(SN::AudioChannelLayout const& inLayout, double inSampleRate, Memory inMemory)
	: mChannels(static_cast<unsigned>(inLayout.size())),
	  mPiece(std::size_t{kPieceFrames} * mChannels),
	  mSquares(mChannels)
{
	if (!CanMeasure(inLayout, inSampleRate))
	{
		throw HostError(HostError::Kind::eRequest, "the loudness of " + std::to_string(mChannels) +
													   " channels at " + std::to_string(inSampleRate) +
													   " Hz cannot be measured");
	}
	int const mode = EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK |
					 (inMemory == Memory::eFixed ? EBUR128_MODE_HISTOGRAM : 0);
	// Fractional rates, like 48000 * 1000 / 1001, are near enough to whole ones for filters and windows.
	ebur128_state* const state =
		ebur128_init(mChannels, static_cast<unsigned long>(std::llround(inSampleRate)), mode);
	if (!state)
	{
		throw std::bad_alloc();
	}
	mMeasure = std::make_unique<Measure>(state);
	for (unsigned channel = 0; channel < mChannels; ++channel)
	{
		ebur128_set_channel(state, channel, GetWeighting(inLayout[channel]));
	}
}

LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::Add(dsp::AudioBuffer const& inBlock)
{
	for (unsigned first = 0; first < inBlock.GetUseSize(); first += kPieceFrames)
	{
		unsigned const count = std::min(kPieceFrames, inBlock.GetUseSize() - first);
		for (unsigned channel = 0; channel < mChannels; ++channel)
		{
			TakeChannel(inBlock, channel, first, count);
		}
		if (ebur128_add_frames_float(mMeasure->mState, mPiece.data(), count) != EBUR128_SUCCESS)
		{
			throw std::bad_alloc();
		}
		mFrames += count;
	}
}

void LoudnessMeter::TakeChannel(
	dsp::AudioBuffer const& inBlock, unsigned inChannel, unsigned inFirst, unsigned inCount)
{
	float* output = mPiece.data() + inChannel;
	if (inBlock.IsChannelSilent(inChannel))
	{
		for (unsigned i = 0; i < inCount; ++i, output += mChannels)
		{
			*output = 0.0f;
		}
		return;
	}
	float const* const samples = inBlock.GetChannel(inChannel) + inFirst;
	float peak = mPeak;
	double squares = mSquares[inChannel];
	for (unsigned i = 0; i < inCount; ++i, output += mChannels)
	{
		float const sample = std::isfinite(samples[i]) ? samples[i] : 0.0f;
		peak = std::max(peak, std::fabs(sample));
		squares += double{sample} * sample;
		*output = sample;
	}
	mPeak = peak;
	mSquares[inChannel] = squares;
}

LoudnessReading LoudnessMeter::GetReading() const
{
	ebur128_state* const state = mMeasure->mState;
	LoudnessReading reading;
	reading.mPeak = mPeak;
	reading.mTruePeak = mPeak;
	for (unsigned channel = 0; channel < mChannels; ++channel)
	{
		double truePeak = 0.0;
		ebur128_true_peak(state, channel, &truePeak);
		reading.mTruePeak = std::max(reading.mTruePeak, truePeak);
	}
	if (mFrames > 0)
	{
		double const squares = std::accumulate(mSquares.begin(), mSquares.end(), 0.0);
		reading.mRMS = std::sqrt(squares / (static_cast<double>(mFrames) * mChannels));
	}
	reading.mMomentary = GetLoudness(&ebur128_loudness_momentary, state);
	reading.mShortTerm = GetLoudness(&ebur128_loudness_shortterm, state);
	reading.mIntegrated = GetLoudness(&ebur128_loudness_global, state);
	return reading;
}

} // namespace SonaroHost
