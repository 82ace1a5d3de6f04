#pragma once

#include "Sonaro/IAudioFilter.h"
#include "Sonaro/Types.h"
#include "Vexilon/ParamValue.h"

namespace SN
{

// A control that stands for one parameter of an effect: what sets it sets the parameter. A copied effect gets one for
// each of its parameters by IRenderableAudioComponentParam::ReplaceControl.
//
// Errors   An empty inFilter raises the null-pointer exception.
// Threads  GetValue on any thread. The others call the effect, on the thread that calls them.
class SONARO_API AudioFilterControl final : public VX::ParamValue<float>
{
public:
	// Stands at the effect's present value.
	AudioFilterControl(InterfaceRef<IAudioFilter> const& inFilter, unsigned inIndex);
	~AudioFilterControl() override;

	// In the effect's own words.
	std::u16string GetText() const override;
	void SetValue(float inValue) override;
	// A control of the same parameter of the same effect, at the value of this one, which is not set.
	boost::shared_ptr<VX::ParamValueBase> Clone() const override;

private:
	InterfaceRef<IAudioFilter> mFilter;
	unsigned mIndex;
};

} // namespace SN
