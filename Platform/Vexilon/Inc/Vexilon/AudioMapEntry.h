#pragma once

#include "zorvaudiodsp/AudioBuffer.h"

#include <memory>
#include <utility>

namespace VX
{

// A stretch of audio as the payload of a MediaVector; absent by default.
class AudioMapEntry
{
public:
	AudioMapEntry() = default;
	explicit AudioMapEntry(std::shared_ptr<dsp::AudioBuffer> inBuffer)
		: mBuffer(std::move(inBuffer))
	{
	}

	// Null when absent.
	dsp::AudioBuffer* GetBuffer() const { return mBuffer.get(); }

	unsigned long long GetSizeInBytes() const
	{
		return mBuffer ? mBuffer->GetNumChannels() * mBuffer->GetUseSize() * sizeof(float) : 0;
	}

private:
	std::shared_ptr<dsp::AudioBuffer> mBuffer;
};

} // namespace VX
