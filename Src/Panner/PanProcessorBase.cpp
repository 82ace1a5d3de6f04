#include "Panner/PanProcessorBase.h"

#include <utility>

namespace SN
{

PanProcessorBase::PanProcessorBase(
	char16_t const* inNodeName, AudioChannelType inInputType, AudioChannelType inOutputType)
	: PanProcessorBase({inNodeName, inInputType, inOutputType, VX::CreateAudioChannelLayout(inInputType),
		  VX::CreateAudioChannelLayout(inOutputType)})
{
}

PanProcessorBase::PanProcessorBase(char16_t const* inNodeName, AudioChannelLayout const& inInputLayout,
	AudioChannelLayout const& inOutputLayout)
	: PanProcessorBase({inNodeName, VX::CreateAudioChannelTypeOrAny(inInputLayout, true),
		  VX::CreateAudioChannelTypeOrAny(inOutputLayout, true), inInputLayout, inOutputLayout})
{
}

PanProcessorBase::PanProcessorBase(PanProcessorShape inShape)
	: mShape(std::move(inShape))
{
}

} // namespace SN
