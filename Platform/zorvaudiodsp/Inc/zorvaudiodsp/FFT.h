#pragma once

#include "zorvcore/Export.h"

#include <memory>

namespace dsp
{

// Fourier transforms of N real samples, in place and in single precision. The relative error is of the order of 1e-7 in
// the mean square.
//
// Layout    Of the spectrum: the real part of bin k in element k and its imaginary part in element N - k; bins 0 and
//           N / 2 are real.
// Scale     Forward has none, so a tone of amplitude 1 on bin k gives N / 2. Inverse has 1 / N and takes Forward back.
// Memory    The constructor alone allocates.
// Threads   One at a time.
class ZORV_API FFT
{
public:
	static bool IsSupported(unsigned inSize);

	// inSize: N, a power of two from 2 to 2^24; else throws zorv_exception. Works out the tables.
	explicit FFT(unsigned inSize);

	unsigned GetSize() const { return mSize; }

	// Replace the N samples by the spectrum, and the spectrum by the samples.
	void Forward(float* ioData) { Transform(ioData, false); }
	void Inverse(float* ioData) { Transform(ioData, true); }

private:
	struct Free
	{
		void operator()(float* inMemory) const;
	};

	void Transform(float* ioData, bool inInverse) const;

	unsigned mSize;
	std::unique_ptr<float, Free> mTable;
	std::unique_ptr<float, Free> mScratch;
};

} // namespace dsp
