#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// Replaces each 32-bit integer by the float nearest to it times 2^-31: full scale becomes 1.0. The
// product is formed in double precision.
SONARO_API void ConvertInt32ToFloat32InPlace(int* ioData, unsigned inCount) SONARO_NONBLOCKING;

// Writes the samples of the buffer's channels in turn into outData, silence for flagged channels: the
// smaller of UseSize and inSamples, of the smaller of the buffer's channels and inChannels. The stride
// is that number of channels. A null outData does nothing.
SONARO_API void InterleaveBuffer(dsp::AudioBuffer const& inBuffer, unsigned long long inChannels,
	unsigned inSamples, float* outData) SONARO_NONBLOCKING;

// One process-wide block of GetMaxResampleBufferSize() zeros, aligned to 32 bytes. The argument is
// ignored; the caller keeps to the limit. Any thread.
SONARO_API float const* GetSilenceBufferPtr(unsigned inSamples) SONARO_NONBLOCKING;

// The largest block in samples that a caller may hand to a resampler.
SONARO_API unsigned GetMaxResampleBufferSize() SONARO_NONBLOCKING;

// How many instances of one nested sequence are cloned; 200 unless the debug database has set
// "OQ.Sonaro.ComplexityBeforeRender".
SONARO_API unsigned GetMaxNestableSequenceInstances();

} // namespace SN
