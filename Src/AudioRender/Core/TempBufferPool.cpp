#include "AudioRender/Core/TempBufferPool.h"

namespace SN
{

void TempBufferPool::ReserveStackAudioBuffer(unsigned inChannels, unsigned inSamples, unsigned inNestingDepth,
	unsigned inInstanceIndex, ImmutableString const& inTag)
{
	Key const key{inChannels, inInstanceIndex, inNestingDepth, inTag};
	auto const found = mStackBuffers.find(key);
	if (found != mStackBuffers.end() && inSamples <= found->second->mBuffer.GetCapacity())
	{
		return;
	}
	auto const buffer = zorvcore::classref::MakeObject<StackAudioBuffer>();
	buffer->mBuffer.Init(inChannels, inSamples);
	// Flagged from the start, which in debug builds means not-a-number, as after each user.
	buffer->mBuffer.Zero();
	mStackBuffers.insert_or_assign(key, buffer);
}

InterfaceRef<StackAudioBuffer> TempBufferPool::GetStackAudioBuffer(
	unsigned inChannels, unsigned inNestingDepth, unsigned inInstanceIndex, ImmutableString const& inTag)
{
	auto const found = mStackBuffers.find(Key{inChannels, inInstanceIndex, inNestingDepth, inTag});
	if (found == mStackBuffers.end())
	{
		return {};
	}
	found->second->mBuffer.Zero();
	return found->second;
}

void TempBufferPool::ReserveStackAudioSubBuffer(
	unsigned inChannels, unsigned inNestingDepth, unsigned inInstanceIndex)
{
	Key const key{inChannels, inInstanceIndex, inNestingDepth, ImmutableString()};
	if (mStackSubBuffers.count(key) == 0)
	{
		auto const window = zorvcore::classref::MakeObject<StackAudioSubBuffer>();
		window->mBuffer.Init(inChannels);
		mStackSubBuffers.emplace(key, window);
	}
}

InterfaceRef<StackAudioSubBuffer> TempBufferPool::GetStackAudioSubBuffer(
	unsigned inChannels, unsigned inNestingDepth, unsigned inInstanceIndex)
{
	auto const found =
		mStackSubBuffers.find(Key{inChannels, inInstanceIndex, inNestingDepth, ImmutableString()});
	return found == mStackSubBuffers.end() ? InterfaceRef<StackAudioSubBuffer>() : found->second;
}

} // namespace SN
