#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Metering/LoudnessOptions.h"
#include "SonaroHost/Metering/LoudnessReading.h"

#include <memory>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

class LoudnessBank;

// Decibels of a linear amplitude; minus infinity for 0.
double ToDecibels(double inAmplitude);

// Ranges a programme by EBU R 128 (ITU-R BS.1770): K-weighted loudness, gated where it is integrated, and
// the true peak, oversampled four times below 96 kHz and twice below 192 kHz, from where on it is that of the
// samples.
//
// Channels  LFE is measured for peaks and RMS alone, surrounds are weighted by 1.5 dB, all else counts alike.
// Samples   Those that are not finite count as 0, and those beyond 2^40 (+241 dB) for the peaks alone. All of them are
//           counted.
// Blocks    Any cut into blocks gives the same reading.
// Threads   One at a time.
class LoudnessMeter
{
public:
	using Memory = LoudnessMemory;
	using Windows = LoudnessWindows;

	// Whether the rate is from 16 Hz to 2.8224 MHz, and the layout has 1 to 64 channels.
	static bool CanMeasure(SN::AudioChannelLayout const& inLayout, double inSampleRate);
	// inBank: of the same sample rate, for one of many meters; then they share a thread. Throws a HostError for what
	// cannot be measured.
	LoudnessMeter(SN::AudioChannelLayout const& inLayout, double inSampleRate, Memory inMemory,
		Windows inWindows = Windows::kSliding, std::shared_ptr<LoudnessBank> inBank = nullptr);
	~LoudnessMeter();
	LoudnessMeter(LoudnessMeter const&) = delete;
	LoudnessMeter& operator=(LoudnessMeter const&) = delete;

	// Hears the block. Channels that it lacks are silent.
	void Add(dsp::AudioBuffer const& inBlock);

	// Costs as much as measuring a second or so, so not for every block. A series is copied.
	LoudnessReading GetReading() const;
	// That of a programme that ends here: what lies between its last samples and the silence after them counts for the
	// true peak, too.
	LoudnessReading GetReadingAtEnd() const;

private:
	struct Measure;

	std::unique_ptr<Measure> mMeasure;
};

} // namespace SonaroHost
