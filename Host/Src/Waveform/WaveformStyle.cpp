#include "SonaroHost/Waveform/WaveformStyle.h"

#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace SonaroHost
{

std::optional<Colour> Colour::Parse(std::string_view inText)
{
	if (inText == "none")
	{
		return Colour{0, 0, 0, 0};
	}
	if ((inText.size() != 7 && inText.size() != 9) || inText.front() != '#')
	{
		return std::nullopt;
	}
	std::array<std::uint8_t, 4> parts{0, 0, 0, 255};
	for (std::size_t i = 1; i < inText.size(); i += 2)
	{
		char const* const end = inText.data() + i + 2;
		auto const [stop, error] = std::from_chars(inText.data() + i, end, parts[i / 2], 16);
		if (error != std::errc() || stop != end)
		{
			return std::nullopt;
		}
	}
	return Colour{parts[0], parts[1], parts[2], parts[3]};
}

WaveformStyle WaveformStyle::Make(PictureTheme inTheme)
{
	WaveformStyle style;
	style.mTheme = inTheme;
	if (inTheme == PictureTheme::kDark)
	{
		style.mBackground = {20, 23, 28, 255};
		style.mWave = {94, 156, 222, 255};
		style.mRms = {26, 66, 110, 255};
	}
	return style;
}

double ScaleAmplitude(double inSample, WaveformStyle const& inStyle)
{
	double const sample = std::isnan(inSample) ? 0.0 : std::clamp(inSample, -1.0, 1.0);
	if (inStyle.mScale == AmplitudeScale::kLinear)
	{
		return sample;
	}
	double const decibels = 20.0 * zorvcore::math::Log10(std::abs(sample));
	return std::copysign(std::max(0.0, 1.0 - decibels / inStyle.mFloorDecibels), sample);
}

} // namespace SonaroHost
