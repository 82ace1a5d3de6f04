#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// Changes how long audio lasts and keeps its pitch, at a ratio that Init fixes.
//
// Ratio     Output duration over input duration, the inverse of a speed: 0.1 to 10. What is played has the nearest ratio
//           of whole hops, which GetRatio gives. Outside of the range the output is silence.
// Driving   The caller asks with GetInputSampleCount how many input samples the next outputs need, fetches those and
//           calls Process with both counts. The first block after Init asks for half a second more; its first outputs
//           belong to the first inputs.
// Surplus   What a block makes beyond the outputs that were asked for comes first in the next block, up to 32768 samples
//           a channel; what goes beyond is lost. Above a ratio of about 5.2 the first block makes more than that, and
//           loses audio.
// Level     Follows the input's by the variances of both, which go on growing once they hold seven seconds: changes of
//           the level count less and less. Outputs lie within -1 and 1.
// Silence   A channel that is flagged, in a block with any input, is flagged in the output, and its audio stands still.
// Channels  Up to 32; further ones are silent.
// Length    A thousand million input samples; the output ends there.
// Memory    Only Init allocates.
// Threads   One at a time.
class SONARO_API IAudioTimeScaler : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioTimeScaler> kIdentifier{0x58d1e6c0b3a74f92ull, 0xa60c97f24e8b1d35ull};

	~IAudioTimeScaler() override = default;

	// Starts anew.
	//
	// inPitchFactor   by how much the pitch rises; 1 keeps it
	// inFFTSize       samples of a frame, a power of two: 2048 suits most audio at 48 kHz
	// inWindowMode    the window's length: 0 four frames, 1 two, 2 one, 3 half a frame
	//
	// With values that leave no hop of a sample, or where memory runs out, the scaler is as before its first Init.
	virtual void Init(double inRatio, FrameRate const& inFrameRate, unsigned inNumChannels,
		double inPitchFactor, unsigned inFFTSize, unsigned inWindowMode) = 0;
	// Frees what Init has made; a scaler needs another Init then.
	virtual void Reset() = 0;

	// How many outputs so many more input samples give at least: 0 before Init, 1 outside the range. The first call of
	// this or of GetInputSampleCount after Init counts what the first block takes more.
	virtual unsigned GetOutputSampleCount(unsigned inNumInput) SONARO_NONBLOCKING = 0;
	// How many more input samples so many outputs need: 0 before Init, as many as outputs outside the range.
	virtual unsigned GetInputSampleCount(unsigned inNumOutput) SONARO_NONBLOCKING = 0;
	// The largest answer of GetInputSampleCount for so many outputs, at this ratio or, for 0, at that of Init.
	virtual unsigned GetMaxInputSampleCount(unsigned inNumOutput, double inRatio) SONARO_NONBLOCKING = 0;

	// As given to Init.
	virtual unsigned GetNumChannels() SONARO_NONBLOCKING = 0;

	// Reads inNumInput samples and writes up to inNumOutput, zeros after that. Returns how many were written in the last
	// channel that was not silent.
	virtual unsigned Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		unsigned inNumInput, unsigned inNumOutput) SONARO_NONBLOCKING = 0;

	// The range of ratios.
	virtual double GetMinRatio() SONARO_NONBLOCKING = 0;
	virtual double GetMaxRatio() SONARO_NONBLOCKING = 0;
	// What is played; 0 before Init. Includes the pitch factor, in whose place the output is resampled.
	virtual double GetRatio() SONARO_NONBLOCKING = 0;

	// A reference to this object.
	virtual InterfaceRef<IAudioTimeScaler> GetSelfReference() = 0;
};

} // namespace SN
