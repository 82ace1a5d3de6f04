#include "Time/Stretch/SourceRing.h"

#include <algorithm>

namespace SN
{

void SourceRing::Init(unsigned inNumChannels, unsigned inSize)
{
	mSize = inSize;
	mChannels.clear();
	for (unsigned channel = 0; channel < inNumChannels; ++channel)
	{
		mChannels.emplace_back(zorvaccelerate::utility::Malloc_Float(mSize));
	}
	Clear();
}

void SourceRing::Clear()
{
	mWriteCount.exchange(0);
	mReadCount.exchange(0);
}

void SourceRing::Write(dsp::AudioBuffer const& inBuffer, unsigned inCount)
{
	unsigned long long const written = mWriteCount.load();
	auto const start = static_cast<unsigned>(written % mSize);
	unsigned const first = std::min(inCount, mSize - start);
	for (unsigned channel = 0; channel < mChannels.size(); ++channel)
	{
		float* const ring = mChannels[channel].get();
		float const* const samples = inBuffer.GetChannel(channel);
		if (!samples)
		{
			zorvaccelerate::utility::Zero(first, ring + start);
			zorvaccelerate::utility::Zero(inCount - first, ring);
			continue;
		}
		zorvaccelerate::utility::Copy(first, samples, ring + start);
		zorvaccelerate::utility::Copy(inCount - first, samples + first, ring);
	}
	mWriteCount.exchange(written + inCount);
}

void SourceRing::Read(unsigned inNumChannels, unsigned inCount, float* const* outChannels)
{
	unsigned long long const read = mReadCount.load();
	auto const start = static_cast<unsigned>(read % mSize);
	unsigned const first = std::min(inCount, mSize - start);
	for (unsigned channel = 0; channel < std::min(inNumChannels, GetNumChannels()); ++channel)
	{
		float const* const ring = mChannels[channel].get();
		zorvaccelerate::utility::Copy(first, ring + start, outChannels[channel]);
		zorvaccelerate::utility::Copy(inCount - first, ring, outChannels[channel] + first);
	}
	mReadCount.exchange(read + inCount);
}

} // namespace SN
