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

} // namespace SN
