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

} // namespace SN
