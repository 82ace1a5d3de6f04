#include "SonaroHost/Render/Fades.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

namespace SonaroHost
{

std::shared_ptr<AutomationCurve const> MakeFadeCurve(
	Fades const& inFades, ProgrammeRange const& inRange, SN::FrameRate const& inFrameRate)
{
	std::vector<AutomationPoint> points;
	auto const add = [&](std::int64_t inFrame, double inGain)
	{
		points.push_back(
			{SN::TickTime(inRange.mFirstFrame + inFrame, inFrameRate), inGain, Interpolation::eLinear});
	};
	std::int64_t const end = std::max<std::int64_t>(inRange.mFrames - 1, 1);
	std::int64_t const outStart = end - inFades.mOut;
	if (inFades.mIn > 0 && inFades.mOut > 0 && outStart < inFades.mIn)
	{
		// The two lines cross before they reach 1.
		double const crossing = static_cast<double>(end) / static_cast<double>(inFades.mIn + inFades.mOut);
		add(0, 0.0);
		add(std::llround(crossing * static_cast<double>(inFades.mIn)), crossing);
		add(end, 0.0);
		return std::make_shared<AutomationCurve const>(std::move(points));
	}
	if (inFades.mIn > 0)
	{
		add(0, 0.0);
		add(inFades.mIn, 1.0);
	}
	if (inFades.mOut > 0)
	{
		add(outStart, 1.0);
		add(end, 0.0);
	}
	return std::make_shared<AutomationCurve const>(std::move(points));
}

SN::InterfaceRef<AutomationParameter<float>> MakeFadeGain(
	Fades const& inFades, ProgrammeRange const& inRange, SN::FrameRate const& inFrameRate)
{
	auto gain = AutomationParameter<float>::Create(1.0f);
	if (!inFades.IsNone())
	{
		gain->SetCurve(MakeFadeCurve(inFades, inRange, inFrameRate));
	}
	return gain;
}

} // namespace SonaroHost
