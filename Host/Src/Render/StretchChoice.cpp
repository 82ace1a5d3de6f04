#include "Render/StretchChoice.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Render/ClipRenderRequest.h"

#include <cmath>

namespace SonaroHost
{

namespace
{

// Written so that what is not a number fails it.
void CheckRanges(double inSpeed, double inSemitones)
{
	if (!(inSpeed >= kLowestSpeed && inSpeed <= kHighestSpeed))
	{
		Refuse("a speed of " + FormatAllDigits(inSpeed) + " is out of range; use 0.01 to 100");
	}
	if (!(std::abs(inSemitones) <= Stretch::kMostSemitones))
	{
		Refuse("a pitch of " + FormatAllDigits(inSemitones) + " semitones is out of range; use -24 to 24");
	}
}

} // namespace

std::optional<Stretch> ChooseStretch(
	double inSpeed, bool inKeepsPitch, double inSemitones, StretchEngine inEngine)
{
	CheckRanges(inSpeed, inSemitones);
	CheckIsBuiltIn(inEngine);
	Stretch stretch;
	stretch.mSpeed = Ratio::FromExactDouble(inSpeed);
	stretch.mPitch = Stretch::GetPitchFactor(inSemitones);
	stretch.mEngine = inEngine;
	if (!inKeepsPitch)
	{
		stretch.mPitch = stretch.mPitch * stretch.mSpeed;
	}
	bool const isPlain = inKeepsPitch ? stretch.IsPlain() : inSemitones == 0.0;
	if (isPlain)
	{
		return std::nullopt;
	}
	if (!stretch.IsInRange())
	{
		double const factor = stretch.mPitch.ToDouble();
		Refuse("a speed of " + FormatAllDigits(inSpeed) + " cannot keep its pitch" +
			   (inSemitones == 0.0 ? "" : " with a pitch of " + FormatAllDigits(inSemitones) + " semitones") +
			   "; use " + FormatNumber(Stretch::kLowestSpeed * factor) + " to " +
			   FormatNumber(Stretch::kHighestSpeed * factor) + ", or leave out --keep-pitch");
	}
	return stretch;
}

} // namespace SonaroHost
