#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// Converts planar audio at one fixed ratio of rates by short filters, block by block without a seam.
//
// Driving   As an IAudioResampler: the caller asks with GetInputSampleCount, fetches so many samples and calls Process
//           with both counts.
// Ahead     The filters look beyond the samples of a block. The input's UseSize is four samples more than the block's
//           count where the rate doubles and three more where it rises by half, and these are the first ones of the
//           next block. Samples beyond UseSize read as zeros.
// Gain      0.98887 to 0.98899 at 0 Hz, in all phases.
// Channels  Those that the resampler was made for; further ones of a buffer are left alone.
// Memory    Nothing allocates after the resampler was made.
// Threads   One at a time.
class SONARO_API IAudioResamplerSpecialized : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioResamplerSpecialized> kIdentifier{
		0x4be1a3f27c9d4860ull, 0x91d5c3780eab6f24ull};

	~IAudioResamplerSpecialized() override = default;

	// Forgets what was heard. inPosition: the next output's position in the stream of outputs, which keeps a restart on
	// the same phase.
	virtual void Reset(unsigned long long inPosition) = 0;

	// How late the output is, in samples of the output and of the input.
	virtual unsigned GetOutputLatency() SONARO_NONBLOCKING = 0;
	virtual unsigned GetInputLatency() SONARO_NONBLOCKING = 0;

	// How many more input samples so many outputs need, at least one: for none, 0 - 1 wraps around to billions.
	virtual unsigned GetInputSampleCount(unsigned inNumOutput) SONARO_NONBLOCKING = 0;

	// Reads inNumInput samples and writes inNumOutput, or as many as outOutput has room for. A block that is silent in
	// all channels silences the output, and the next output begins at the next input.
	virtual void Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput,
		unsigned inNumOutput) SONARO_NONBLOCKING = 0;

	// A reference to this object.
	virtual InterfaceRef<IAudioResamplerSpecialized> GetSelfReference() = 0;
};

} // namespace SN
