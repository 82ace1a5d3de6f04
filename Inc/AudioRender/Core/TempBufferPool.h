#pragma once

#include "AudioRender/Core/StackAudioBuffer.h"
#include "Sonaro/Types.h"

#include <compare>
#include <map>

namespace SN
{

// The scratch memory of one render context. Nodes reserve while the graph is built and pick up on the
// render path, where nothing allocates: a node that forgot to reserve gets an empty reference. Buffers
// never shrink and stay until the pool dies. Belongs to the context's thread; nothing locks.
class TempBufferPool final : public virtual Unknown
{
public:
	// Makes a buffer of at least so many samples under the key. A buffer that is too short is replaced;
	// who holds the old one keeps it.
	void ReserveStackAudioBuffer(unsigned inChannels, unsigned inSamples, unsigned inNestingDepth,
		unsigned inInstanceIndex, ImmutableString const& inTag);

	// The buffer reserved under exactly that key, all its channels flagged silent; empty when there is
	// none. UseSize is what the last user left.
	InterfaceRef<StackAudioBuffer> GetStackAudioBuffer(unsigned inChannels, unsigned inNestingDepth,
		unsigned inInstanceIndex, ImmutableString const& inTag) SONARO_NONBLOCKING;

	// The same for windows, which know no tag; the caller aims them.
	void ReserveStackAudioSubBuffer(unsigned inChannels, unsigned inNestingDepth, unsigned inInstanceIndex);
	InterfaceRef<StackAudioSubBuffer> GetStackAudioSubBuffer(
		unsigned inChannels, unsigned inNestingDepth, unsigned inInstanceIndex) SONARO_NONBLOCKING;

private:
	// The members stand in the order that keys are compared by.
	struct Key
	{
		friend auto operator<=>(Key const&, Key const&) = default;

		unsigned mNumChannels;
		unsigned mInstanceIndex;
		unsigned mNestingDepth;
		ImmutableString mTag;
	};

	std::map<Key, InterfaceRef<StackAudioBuffer>> mStackBuffers;
	std::map<Key, InterfaceRef<StackAudioSubBuffer>> mStackSubBuffers;
};

} // namespace SN
