#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// Converts planar audio from one sample rate to another, block by block without a seam.
//
// Driving   The caller asks with GetInputSampleCount how many input samples the next outputs need,
//           fetches those and calls Process with both counts. Blocks are at most
//           GetMaxResampleBufferSize() samples long.
// Channels  Those that Init was given; further ones of a buffer are left alone.
// Memory    Only Init allocates. A tap beyond the input reads the buffer's own samples up to its
//           capacity and zeros from there on.
// Threads   One at a time.
class SONARO_API IAudioResampler : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioResampler> kIdentifier{0xe9aa0b85024c9465ull, 0xf3b68634175b25deull};

	~IAudioResampler() override = default;

	// Only the ratio of the rates counts. inHighQuality is for those that come in two lengths of filter.
	// Starts anew.
	virtual void Init(FrameRate const& inInputRate, FrameRate const& inOutputRate, unsigned inNumChannels,
		bool inHighQuality) = 0;
	// Forgets what was heard; the rates stay. The next output begins at the next input.
	virtual void Reset() = 0;

	// Whether SetFrameRates does anything: a varying speed needs a resampler that answers true.
	virtual bool SupportsFrameRateChange() SONARO_NONBLOCKING = 0;
	// Takes effect from the next output sample on; what was heard before stays connected.
	virtual void SetFrameRates(
		FrameRate const& inInputRate, FrameRate const& inOutputRate) SONARO_NONBLOCKING = 0;
	// The rate in use of what is read; invalid before Init.
	virtual FrameRate GetInputFrameRate() SONARO_NONBLOCKING = 0;
	// The rate in use of what is written; invalid before Init.
	virtual FrameRate GetOutputFrameRate() SONARO_NONBLOCKING = 0;

	// How many outputs so many more input samples give, from where the last Process has ended.
	virtual unsigned GetOutputSampleCount(unsigned inNumInput) SONARO_NONBLOCKING = 0;
	// How many more input samples so many outputs need, from there.
	virtual unsigned GetInputSampleCount(unsigned inNumOutput) SONARO_NONBLOCKING = 0;

	// Reads inNumInput samples and writes inNumOutput, or as many as outOutput has room for.
	virtual void Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput,
		unsigned inNumOutput) SONARO_NONBLOCKING = 0;

	// A reference to this object.
	virtual InterfaceRef<IAudioResampler> GetSelfReference() = 0;
};

} // namespace SN
