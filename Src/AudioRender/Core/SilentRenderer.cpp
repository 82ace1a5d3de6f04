#include "AudioRender/Core/SilentRenderer.h"

namespace SN
{

namespace
{

constexpr FrameRate k48000Hz{5292000};

} // namespace

int SilentRenderer::Create(AudioChannelLayout const& inLayout, InterfaceRef<IAudioGenerator>* outGenerator)
{
	*outGenerator = zorvcore::classref::MakeObject<SilentRenderer>(inLayout);
	return kSuccess;
}

SilentRenderer::SilentRenderer(AudioChannelLayout const& inLayout)
	: mChannelType(VX::CreateAudioChannelTypeOrAny(inLayout, true)),
	  mChannelLayout(inLayout)
{
}

FrameRate SilentRenderer::GetGeneratorFrameRate()
{
	return k48000Hz;
}

void* SilentRenderer::QueryMap(GUID const& inIdentifier)
{
	void* const found = zorvcore::classref::QueryInterfaces<IAudioGenerator, IAudioGeneratorPrivate,
		ICachedAudioGenerator, IAudioRenderGraphNodeInfo>(this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

} // namespace SN
