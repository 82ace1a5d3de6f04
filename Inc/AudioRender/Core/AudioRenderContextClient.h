#pragma once

#include "AudioRender/Core/AudioRenderContext.h"
#include "Sonaro/Types.h"

namespace SN
{

// A node's tie to its render context, embedded in the node. It captures the place in the nesting of
// sequences where the node was built, also for the time after, so that two nested instances of a
// sequence never share scratch memory.
//
// Every operation but Init raises the null-pointer exception when no context is stored.
class AudioRenderContextClient
{
public:
	AudioRenderContextClient() = default;
	AudioRenderContextClient(AudioRenderContextClient const&) = default;
	AudioRenderContextClient& operator=(AudioRenderContextClient const&) = default;
	virtual ~AudioRenderContextClient() = default;

	// eNullPointer for an empty context. eInvalidArgument for the invalid rate, which is stored all the
	// same.
	int Init(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate);

	// The sample rate at which the node runs.
	FrameRate GetFrameRate() const { return mFrameRate; }
	// The depth that was captured, whatever the context's is now.
	unsigned GetNestingDepth() const { return mNestingDepth; }

	unsigned GetControlInterval() const { return mRenderContext->GetControlInterval(); }
	bool IsPrefetchEnabled() const { return mRenderContext->IsPrefetchEnabled(); }
	bool IsImmediateRender() const { return mRenderContext->IsImmediateRender(); }
	bool IsDelayCompensationDisabled() const { return mRenderContext->IsDelayCompensationDisabled(); }
	bool GetFilterRenderFlag() const { return mRenderContext->GetFilterRenderFlag(); }
	unsigned GetMaxBlockSize() const { return mRenderContext->GetMaxBlockSize(); }
	Prefetcher* GetPrefetcher() const { return mRenderContext->GetPrefetcher(); }
	bool GetPannerParamFlag() const { return mRenderContext->GetPannerParamFlag(); }
	bool GetFaderParamFlag() const { return mRenderContext->GetFaderParamFlag(); }
	bool GetFilterParamFlag() const { return mRenderContext->GetFilterParamFlag(); }
	bool GetSendParamFlag() const { return mRenderContext->GetSendParamFlag(); }

	InterfaceRef<UnknownBase> FindClone(InterfaceRef<UnknownBase> const& inNode) const
	{
		return mRenderContext->FindClone(inNode);
	}
	void AddClone(InterfaceRef<UnknownBase> const& inNode, InterfaceRef<UnknownBase> const& inClone) const
	{
		mRenderContext->AddClone(inNode, inClone);
	}
	void AddCachedGenerator(
		InterfaceRef<UnknownBase> const& inKey, InterfaceRef<ICachedAudioGenerator> const& inGenerator) const
	{
		mRenderContext->AddCachedGenerator(inKey, inGenerator);
	}

	// The pool's operations at the captured place; see TempBufferPool.
	void ReserveStackAudioBuffer(unsigned inChannels, unsigned inSamples, ImmutableString const& inTag) const
	{
		mRenderContext->GetTempBufferPool().ReserveStackAudioBuffer(
			inChannels, inSamples, mNestingDepth, mInstanceIndex, inTag);
	}
	InterfaceRef<StackAudioBuffer> GetStackAudioBuffer(
		unsigned inChannels, ImmutableString const& inTag) const SONARO_NONBLOCKING
	{
		return mRenderContext->GetTempBufferPool().GetStackAudioBuffer(
			inChannels, mNestingDepth, mInstanceIndex, inTag);
	}
	void ReserveStackAudioSubBuffer(unsigned inChannels) const
	{
		mRenderContext->GetTempBufferPool().ReserveStackAudioSubBuffer(
			inChannels, mNestingDepth, mInstanceIndex);
	}
	InterfaceRef<StackAudioSubBuffer> GetStackAudioSubBuffer(unsigned inChannels) const SONARO_NONBLOCKING
	{
		return mRenderContext->GetTempBufferPool().GetStackAudioSubBuffer(
			inChannels, mNestingDepth, mInstanceIndex);
	}

private:
	InterfaceRef<AudioRenderContext> mRenderContext;
	FrameRate mFrameRate;
	unsigned mNestingDepth = 0;
	unsigned mInstanceIndex = 0;
};

// The beginning of a clone: a node of the same class in the same place of the same context. The arguments are those
// of its constructor.
template <class Node, class... Args>
InterfaceRef<Node> StartClone(Node const& inNode, Args const&... inArgs)
{
	auto const clone = zorvcore::classref::MakeObject<Node>(inArgs...);
	static_cast<AudioRenderContextClient&>(*clone) = inNode;
	return clone;
}

} // namespace SN
