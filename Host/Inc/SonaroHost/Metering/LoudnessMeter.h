#pragma once

#include "Sonaro/Types.h"

#include <limits>
#include <memory>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

class LoudnessBank;

// What a meter shows of a programme. Loudness is in LUFS and minus infinity for silence, for less audio than
// its window, and where everything is below the gate of -70 LUFS.
struct LoudnessReading
{
	static constexpr double kSilent = -std::numeric_limits<double>::infinity();

	// Linear, 1 being full scale: the largest magnitude of the samples, and of the signal through them.
	double mPeak = 0.0;
	double mTruePeak = 0.0;
	// Of all samples of all channels; linear.
	double mRMS = 0.0;
	// Of the last 400 ms, of the last 3 s, and of everything since the start.
	double mMomentary = kSilent;
	double mShortTerm = kSilent;
	double mIntegrated = kSilent;
};

// Decibels of a linear amplitude; minus infinity for 0.
double ToDecibels(double inAmplitude);

// Measures a programme by EBU R 128 (ITU-R BS.1770): K-weighted loudness, gated where it is integrated, and
// the true peak, oversampled four times below 96 kHz and twice below 192 kHz, from where on it is that of the
// samples.
//
// Channels  LFE is measured for peaks and RMS alone, surrounds are weighted by 1.5 dB, all else counts alike.
// Samples   Those that are not finite, or beyond 2^40 (+241 dB), count as 0.
// Blocks    Any cut into blocks gives the same reading.
// Threads   One at a time.
class LoudnessMeter
{
public:
	enum class Memory
	{
		// The integrated loudness is exact. A block of 100 ms of audio costs 8 bytes, allocated on the way.
		eGrowing,
		// Blocks near the relative gate pass it or not in classes of 0.01 LU, and nothing allocates after the
		// constructor.
		eFixed,
	};

	enum class Windows
	{
		// Momentary and short-term loudness stay at minus infinity.
		eNone,
		// They are measured, in 12 bytes for each frame of a second.
		eSliding,
	};

	// From 16 Hz to 2.8224 MHz, and 1 to 64 channels.
	static bool CanMeasure(SN::AudioChannelLayout const& inLayout, double inSampleRate);
	// inBank: of the same sample rate, for one of many meters; then they share a thread. Throws a HostError for what
	// cannot be measured.
	LoudnessMeter(SN::AudioChannelLayout const& inLayout, double inSampleRate, Memory inMemory,
		Windows inWindows = Windows::eSliding, std::shared_ptr<LoudnessBank> inBank = nullptr);
	~LoudnessMeter();
	LoudnessMeter(LoudnessMeter const&) = delete;
	LoudnessMeter& operator=(LoudnessMeter const&) = delete;

	// Hears the block. Channels that it lacks are silent.
	void Add(dsp::AudioBuffer const& inBlock);

	// Costs as much as measuring a second or so, so not for every block.
	LoudnessReading GetReading() const;

private:
	struct Measure;

	std::unique_ptr<Measure> mMeasure;
};

} // namespace SonaroHost
