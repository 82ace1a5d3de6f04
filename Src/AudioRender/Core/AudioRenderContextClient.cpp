#include "AudioRender/Core/AudioRenderContextClient.h"

namespace SN
{

int AudioRenderContextClient::Init(
	InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate)
{
	if (!inContext)
	{
		return eNullPointer;
	}
	mRenderContext = inContext;
	mNestingDepth = inContext->GetNestingDepth();
	mInstanceIndex = mRenderContext->GetInstanceIndex();
	mFrameRate = inFrameRate;
	return inFrameRate.IsValid() ? kSuccess : eInvalidArgument;
}

InterfaceRef<UnknownBase> AudioRenderContextClient::FindClone(InterfaceRef<UnknownBase> const& inNode) const
{
	return mRenderContext->FindClone(inNode);
}

void AudioRenderContextClient::AddClone(
	InterfaceRef<UnknownBase> const& inNode, InterfaceRef<UnknownBase> const& inClone) const
{
	mRenderContext->AddClone(inNode, inClone);
}

void AudioRenderContextClient::AddCachedGenerator(
	InterfaceRef<UnknownBase> const& inKey, InterfaceRef<ICachedAudioGenerator> const& inGenerator) const
{
	mRenderContext->AddCachedGenerator(inKey, inGenerator);
}

void AudioRenderContextClient::ReserveStackAudioBuffer(
	unsigned inChannels, unsigned inSamples, ImmutableString const& inTag) const
{
	mRenderContext->GetTempBufferPool().ReserveStackAudioBuffer(
		inChannels, inSamples, mNestingDepth, mInstanceIndex, inTag);
}

InterfaceRef<StackAudioBuffer> AudioRenderContextClient::GetStackAudioBuffer(
	unsigned inChannels, ImmutableString const& inTag) const
{
	return mRenderContext->GetTempBufferPool().GetStackAudioBuffer(
		inChannels, mNestingDepth, mInstanceIndex, inTag);
}

void AudioRenderContextClient::ReserveStackAudioSubBuffer(unsigned inChannels) const
{
	mRenderContext->GetTempBufferPool().ReserveStackAudioSubBuffer(inChannels, mNestingDepth, mInstanceIndex);
}

InterfaceRef<StackAudioSubBuffer> AudioRenderContextClient::GetStackAudioSubBuffer(unsigned inChannels) const
{
	return mRenderContext->GetTempBufferPool().GetStackAudioSubBuffer(
		inChannels, mNestingDepth, mInstanceIndex);
}

} // namespace SN
