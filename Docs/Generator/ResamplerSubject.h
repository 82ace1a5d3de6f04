#pragma once

#include "Time/ResamplerRuns.h"

#include <functional>
#include <string>
#include <vector>

namespace SonaroDocuments
{

// A resampler that is measured: one of the engine's, or the host's converter.
struct ResamplerSubject
{
	using Signals = std::vector<SN::Testing::Signal>;

	std::string mName;
	// So many outputs of each input, from the rate inFrom to the rate inTo.
	std::function<Signals(Signals const& inInputs, unsigned inFrom, unsigned inTo, unsigned inCount)>
		mConvert;
	// Input samples by which outputs stand ahead.
	double mAhead = 0.0;
};

// The engine's in their order, then the host's.
std::vector<ResamplerSubject> ListResamplers();

} // namespace SonaroDocuments
