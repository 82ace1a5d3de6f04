#include "AudioRender/Track/CompensatingDelayOwnerMixin.h"

#include <algorithm>

namespace SN
{

int CompensatingDelayOwnerMixin::Init(unsigned inLineCount, unsigned inMaxSamples, unsigned inNumChannels)
{
	mDelayLines.resize(inLineCount);
	for (CompensatingDelayLine& line : mDelayLines)
	{
		line.Init(inMaxSamples, inNumChannels);
	}
	return kSuccess;
}

void CompensatingDelayOwnerMixin::CopyDimensions(CompensatingDelayOwnerMixin const& inOther)
{
	mDelayLines.resize(inOther.mDelayLines.size());
	for (std::size_t i = 0; i < mDelayLines.size(); ++i)
	{
		mDelayLines[i].Init(inOther.mDelayLines[i].GetMaxSamples(), inOther.mDelayLines[i].GetNumChannels());
	}
}

void CompensatingDelayOwnerMixin::SetDelays(std::vector<DelayDependency> const& inDependencies)
{
	for (std::size_t i = 0; i < std::min(mDelayLines.size(), inDependencies.size()); ++i)
	{
		mDelayLines[i].SetDelay(inDependencies[i].mDelay);
	}
	if (!mDelayLines.empty())
	{
		mDelayLines.back().SetInPlace();
	}
}

} // namespace SN
