#pragma once

#include "ResamplerRuns.h"

#include <memory>

// The resamplers written again in the plainest way, sample by sample and channel by channel: what the
// engine's own must equal to the bit.
namespace SN::Testing
{

// One channel. Taps beyond the input read zeros.
class ReferenceResampler
{
public:
	virtual ~ReferenceResampler() = default;
	virtual unsigned CountInput(unsigned inNumOutput) = 0;
	virtual Signal Process(Signal const& inInput, unsigned inNumInput, unsigned inNumOutput) = 0;
};

std::unique_ptr<ReferenceResampler> MakeReference(ResamplerKind inKind, double inRatio);

} // namespace SN::Testing
