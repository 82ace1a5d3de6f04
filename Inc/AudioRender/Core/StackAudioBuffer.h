#pragma once

#include "Sonaro/Types.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <utility>

namespace SN
{

// A scratch buffer of a pool. In use is a marker for inspection: nothing is refused because of it.
template <class Buffer>
class PooledBuffer final : public virtual Unknown
{
public:
	Buffer mBuffer;
	bool mInUse = false;
};

using StackAudioBuffer = PooledBuffer<dsp::AudioBuffer>;
using StackAudioSubBuffer = PooledBuffer<dsp::AudioSubBuffer>;

// Marks a buffer as in use for as long as it lives; for a caller that holds a reference to it already.
template <class Pooled>
class ScopedBufferUse
{
public:
	explicit ScopedBufferUse(Pooled& ioBuffer)
		: mBuffer(ioBuffer)
	{
		mBuffer.mInUse = true;
	}
	~ScopedBufferUse() { mBuffer.mInUse = false; }
	ScopedBufferUse(ScopedBufferUse const&) = delete;
	ScopedBufferUse& operator=(ScopedBufferUse const&) = delete;

private:
	Pooled& mBuffer;
};

// Held on the stack for the length of one use; marks the buffer as in use meanwhile. Over an empty
// reference it does nothing, and reaching for the buffer raises the null-pointer exception.
template <class Pooled>
class ScopedPooledBuffer
{
public:
	explicit ScopedPooledBuffer(InterfaceRef<Pooled> inBuffer)
		: mRef(std::move(inBuffer))
	{
		Mark(true);
	}
	~ScopedPooledBuffer() { Mark(false); }
	ScopedPooledBuffer(ScopedPooledBuffer const&) = delete;
	ScopedPooledBuffer& operator=(ScopedPooledBuffer const&) = delete;

	auto& GetBuffer() const { return mRef->mBuffer; }

private:
	void Mark(bool inInUse)
	{
		if (mRef)
		{
			mRef->mInUse = inInUse;
		}
	}

	InterfaceRef<Pooled> mRef;
};

using ScopedStackAudioBuffer = ScopedPooledBuffer<StackAudioBuffer>;
using ScopedStackAudioSubBuffer = ScopedPooledBuffer<StackAudioSubBuffer>;

} // namespace SN
