#include "Sonaro/AudioFilterControl.h"

#include <boost/make_shared.hpp>

namespace SN
{

AudioFilterControl::AudioFilterControl(InterfaceRef<IAudioFilter> const& inFilter, unsigned inIndex)
	: ParamValue(inFilter->GetParameter(inIndex)),
	  mFilter(inFilter),
	  mIndex(inIndex)
{
}

AudioFilterControl::~AudioFilterControl() = default;

std::u16string AudioFilterControl::GetText() const
{
	std::u16string text;
	mFilter->GetParameterText(text, mIndex);
	return text;
}

void AudioFilterControl::SetValue(float inValue)
{
	mFilter->SetParameter(mIndex, inValue);
	ParamValue::SetValue(inValue);
}

boost::shared_ptr<VX::ParamValueBase> AudioFilterControl::Clone() const
{
	auto const clone = boost::make_shared<AudioFilterControl>(mFilter, mIndex);
	// Past the effect, whose parameter may have moved on.
	clone->ParamValue::SetValue(GetValue());
	return clone;
}

} // namespace SN
