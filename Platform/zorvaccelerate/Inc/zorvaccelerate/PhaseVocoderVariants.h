#pragma once

#include "zorvaccelerate/PhaseVocoder.h"

#include <vector>

namespace zorvaccelerate::utility
{

// The operations of PhaseVocoder.h compiled for one level of processors.
struct PhaseVocoderVariant
{
	char const* mName;
	void (*mAnalyseBins)(BinGrid const&, float const*, float, float*, float*, float*);
	void (*mSynthesiseBins)(BinGrid const&, float const*, float const*, float, float*, float*);
	void (*mMulAdd)(unsigned, float const*, float const*, float*);
	void (*mUpdateMeans)(unsigned, MeansRun const*);
};

// Those that this processor can run, the plainest first. The last one is in use.
ZORV_API std::vector<PhaseVocoderVariant> RunnablePhaseVocoderVariants();

} // namespace zorvaccelerate::utility
