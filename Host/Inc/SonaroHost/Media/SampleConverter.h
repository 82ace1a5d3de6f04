#pragma once

#include <cstdint>
#include <span>

namespace SonaroHost
{

// Makes outputs of an input by the places of that where they stand. An output depends on the input around its place
// alone, never on what was asked before: any cut, any order and any thread give the same bits.
//
// Counts   Outputs go from -2^42 to 2^42.
// Threads  Any, at the same time. Nothing allocates or takes a lock after the constructor.
class SampleConverter
{
public:
	// A range of frames of the input, mEnd outside.
	struct Span
	{
		std::int64_t mFirst = 0;
		std::int64_t mEnd = 0;
	};

	// The samples of a channel: those of GetInput, and where the outputs go.
	struct Channel
	{
		float const* mInput;
		float* mOutput;
	};

	SampleConverter() = default;
	virtual ~SampleConverter() = default;

	// The most frames of input that an output depends on.
	virtual unsigned GetTaps() const = 0;
	// The input that outputs from inFirst on depend on. inCount is 1 or more.
	virtual Span GetInput(std::int64_t inFirst, std::int64_t inCount) const = 0;
	// The most frames that so many outputs depend on, wherever they are.
	virtual std::int64_t CountInput(std::int64_t inOutputs) const = 0;
	// How many outputs, wherever they are, depend on no more than so many frames; at least 1 where these are GetTaps.
	virtual std::int64_t CountOutputs(std::int64_t inFrames) const = 0;
	// Whether an output belongs to those that pass the input backwards, and the next one after it that does not do as it
	// does, or inEnd.
	virtual bool IsBackwards(std::int64_t inOutput) const = 0;
	virtual std::int64_t FindTurn(std::int64_t inOutput, std::int64_t inEnd) const = 0;

	// Makes the outputs inFirst and so on. Each channel's input begins at the first frame of
	// GetInput(inFirst, inCount).
	virtual void Convert(
		std::int64_t inFirst, unsigned inCount, std::span<Channel const> inChannels) const = 0;

protected:
	SampleConverter(SampleConverter const&) = default;
	SampleConverter& operator=(SampleConverter const&) = default;
};

} // namespace SonaroHost
