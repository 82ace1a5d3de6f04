#pragma once

#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Media/Stretch.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <memory>

namespace SonaroHost
{

// Changes how long sound lasts and keeps its pitch, from its start to any length.
//
// Position  Frame 0 of the output is frame 0 of the input; frame k of the output stands at k / GetRatio() in the input.
// Threads   One at a time.
class TimeStretcher
{
public:
	TimeStretcher() = default;
	virtual ~TimeStretcher() = default;
	TimeStretcher(TimeStretcher const&) = delete;
	TimeStretcher& operator=(TimeStretcher const&) = delete;

	// Frames of the output for one of the input, exactly: as near to what was asked for as it can be.
	virtual Ratio GetRatio() const = 0;
	// The most frames that a block takes, and gives.
	virtual unsigned GetLargestInput() const = 0;
	virtual unsigned GetLargestOutput() const = 0;
	// What the next block takes. Blocks are chosen here alone, so that samples depend on nothing else.
	virtual unsigned GetInputNeeded() const = 0;
	// Takes the frames of a block, all that the input uses, which are finite, and may change them. Returns how many frames
	// it has written.
	virtual unsigned Process(dsp::AudioBuffer& ioInput, dsp::AudioBuffer& outOutput) = 0;
};

// inRatio: of the range of a Stretch. Throws a HostError where the engine is not built in or there is no memory for it.
std::unique_ptr<TimeStretcher> MakeTimeStretcher(
	StretchEngine inEngine, Ratio const& inRatio, unsigned inChannels, int inSampleRate);

} // namespace SonaroHost
