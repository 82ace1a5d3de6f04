#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include "stretch/omega/SpliceEngine.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <atomic>
#include <cmath>

#if defined(SONARO_WITH_RUBBERBAND)
#include "stretch/omega/RubberBandEngine.h"
#endif

namespace dsp::stretch::omega
{

namespace
{

std::atomic<OmegaEngineKind> sKind{OmegaEngineKind::kSplice};

// inStart and inEnd: how far limits may go.
bool AreLimits(float inLowest, float inHighest, float inStart, float inEnd)
{
	return inLowest >= inStart && inHighest <= inEnd && inLowest <= inHighest;
}

} // namespace

zorvcore::Result OmegaEngine::Create(OmegaEngine** outEngine, float inSampleRate, unsigned inNumChannels,
	unsigned inBlockSize, float, float inMinRatio, float inMaxRatio, float inMinSemitones,
	float inMaxSemitones)
{
	OmegaLimits const limits{inMinRatio, inMaxRatio, inMinSemitones, inMaxSemitones};
	return CreateOfKind(outEngine, GetOmegaEngineKind(), inSampleRate, inNumChannels, inBlockSize, limits);
}

zorvcore::Result OmegaEngine::CreateOfKind(OmegaEngine** outEngine, OmegaEngineKind inKind,
	float inSampleRate, unsigned inNumChannels, unsigned inBlockSize, OmegaLimits const& inLimits)
{
	if (!outEngine || !IsOmegaEngineKindBuiltIn(inKind) || !std::isfinite(inSampleRate) ||
		!(inSampleRate > 0.0f) || inNumChannels == 0 || inNumChannels > AudioBuffer::kMaxChannels ||
		inBlockSize == 0 || !AreLimits(inLimits.mMinRatio, inLimits.mMaxRatio, 0.001f, 1000.0f) ||
		!AreLimits(inLimits.mMinSemitones, inLimits.mMaxSemitones, -60.0f, 60.0f))
	{
		return zorvcore::eInvalidArgument;
	}
	auto const rate = static_cast<double>(inSampleRate);
#if defined(SONARO_WITH_RUBBERBAND)
	if (inKind == OmegaEngineKind::kRubberBand)
	{
		*outEngine = new RubberBandEngine(rate, inNumChannels, inBlockSize, inLimits);
		return zorvcore::kSuccess;
	}
#endif
	*outEngine = new SpliceEngine(rate, inNumChannels, inBlockSize, inLimits);
	return zorvcore::kSuccess;
}

void OmegaEngine::Destroy(OmegaEngine* inEngine)
{
	delete inEngine;
}

bool IsOmegaEngineKindBuiltIn(OmegaEngineKind inKind)
{
#if defined(SONARO_WITH_RUBBERBAND)
	return inKind == OmegaEngineKind::kSplice || inKind == OmegaEngineKind::kRubberBand;
#else
	return inKind == OmegaEngineKind::kSplice;
#endif
}

bool SetOmegaEngineKind(OmegaEngineKind inKind)
{
	if (!IsOmegaEngineKindBuiltIn(inKind))
	{
		return false;
	}
	sKind.store(inKind);
	return true;
}

OmegaEngineKind GetOmegaEngineKind()
{
	return sKind.load();
}

} // namespace dsp::stretch::omega
