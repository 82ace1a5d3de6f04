#include "Panner/PanProcessorBase.h"

namespace SN
{

PanProcessorBase::PanProcessorBase(
	char16_t const* inNodeName, AudioChannelType inInputType, AudioChannelType inOutputType)
	: mShape{inNodeName, inInputType, inOutputType, VX::CreateAudioChannelLayout(inInputType),
		  VX::CreateAudioChannelLayout(inOutputType)}
{
}

void PanProcessorBase::SetShape(char16_t const* inNodeName, AudioChannelLayout const& inInputLayout,
	AudioChannelLayout const& inOutputLayout)
{
	mShape = {inNodeName, VX::CreateAudioChannelTypeOrAny(inInputLayout, true),
		VX::CreateAudioChannelTypeOrAny(inOutputLayout, true), inInputLayout, inOutputLayout};
}

void PanProcessorBase::CopyFrom(PanProcessorBase const& inOther, FrameRate const&, unsigned)
{
	static_cast<AudioRenderContextClient&>(*this) = inOther;
	mShape = inOther.mShape;
}

} // namespace SN
