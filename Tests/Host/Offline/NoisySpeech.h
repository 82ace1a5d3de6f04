#pragma once

#include "Host/Sound.h"

#include <cstdint>
#include <vector>

namespace SonaroHost::Testing
{

// Words of vowels with pauses, and what is steady beneath them.
struct NoisySpeech
{
	enum class Noise
	{
		kWhite,
		// Falls by 6 dB an octave above 200 Hz.
		kDark,
		// Mains and its harmonics above some hiss.
		kHum,
	};

	NoisySpeech(Noise inNoise, int inSampleRate, double inSeconds, double inRatioDecibels = 20.0);

	// Of one channel.
	Sound Mix() const;
	// By how many decibels the noise of the pauses is lower in a sound, without their first and last tenth of a second.
	double MeasureReduction(Sound const& inSound) const;
	// By how many decibels the speech in a sound is louder than here: the part of the sound that is like it.
	double MeasureSpeech(Sound const& inSound) const;
	// The kurtosis of the powers of all bins in the pauses, by that of the noise: above 1 where single ones stick out.
	double MeasurePeaks(Sound const& inSound) const;

	int mSampleRate;
	std::vector<double> mSpeech;
	std::vector<double> mNoise;
	// Whether a sample lies well within a pause.
	std::vector<bool> mIsPause;
};

} // namespace SonaroHost::Testing
