#include "SonaroHost/Sequence/FadeShape.h"

#include "Sonaro/IAudioTransition.h"

#include <cmath>
#include <numbers>

namespace SonaroHost::Sequence
{

namespace
{

class Crossfading final : public SN::IAudioTransition
{
public:
	Crossfading(FadeShape inOutgoing, FadeShape inIncoming)
		: mOutgoing(inOutgoing),
		  mIncoming(inIncoming)
	{
	}

	void GetGainValue(SN::AudioTransitionParameters const&, float inProgress, float& outOutgoing,
		float& outIncoming) override
	{
		outOutgoing = GetFadeGain(mOutgoing, 1.0f - inProgress);
		outIncoming = GetFadeGain(mIncoming, inProgress);
	}

protected:
	void* QueryMap(SN::Guid const& inIdentifier) override
	{
		void* const found = zorvcore::classref::QueryInterfaces<SN::IAudioTransition>(this, inIdentifier);
		return found ? found : Unknown::QueryMap(inIdentifier);
	}

private:
	FadeShape mOutgoing;
	FadeShape mIncoming;
};

} // namespace

float GetFadeGain(FadeShape inShape, float inProgress)
{
	// Written so that what is not a number is silence.
	if (!(inProgress > 0.0f))
	{
		return 0.0f;
	}
	if (inProgress >= 1.0f)
	{
		return 1.0f;
	}
	switch (inShape)
	{
	case FadeShape::eLinear:
		return inProgress;
	case FadeShape::eEqualPower:
		return std::sin(inProgress * std::numbers::pi_v<float> / 2.0f);
	case FadeShape::eSCurve:
		return inProgress * inProgress * (3.0f - 2.0f * inProgress);
	}
	return inProgress;
}

SN::InterfaceRef<SN::IAudioTransition> CreateCrossfade(FadeShape inOutgoing, FadeShape inIncoming)
{
	return zorvcore::classref::MakeObject<Crossfading>(inOutgoing, inIncoming);
}

} // namespace SonaroHost::Sequence
