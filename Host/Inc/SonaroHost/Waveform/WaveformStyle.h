#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace SonaroHost
{

// Columns of peaks for each pixel of a picture: the edge of what is drawn is off by at most one of them.
inline constexpr std::int64_t kColumnsPerPixel = 16;

// Pixels in either direction.
inline constexpr unsigned kMaxPictureSize = 32767;

// A colour with its opacity, each part from 0 to 255.
struct Colour
{
	// "#rrggbb", "#rrggbbaa" or "none", which is transparent. Nothing for any other text.
	static std::optional<Colour> Parse(std::string_view inText);

	friend bool operator==(Colour const&, Colour const&) = default;

	std::uint8_t mRed = 0;
	std::uint8_t mGreen = 0;
	std::uint8_t mBlue = 0;
	std::uint8_t mAlpha = 255;
};

enum class AmplitudeScale
{
	kLinear,
	// Decibels, from the floor in the middle to full scale at the edge.
	kDecibels,
};

enum class PictureTheme
{
	kLight,
	kDark,
};

// What a picture of a waveform looks like.
struct WaveformStyle
{
	// The theme's colours, and otherwise what a style has.
	static WaveformStyle Make(PictureTheme inTheme);

	// The height in pixels; the channels share it.
	unsigned mHeight = 240;
	Colour mBackground{255, 255, 255, 255};
	Colour mWave{36, 84, 138, 255};
	Colour mRms{122, 170, 220, 255};
	PictureTheme mTheme = PictureTheme::kLight;
	AmplitudeScale mScale = AmplitudeScale::kLinear;
	// The floor, below 0.
	double mFloorDecibels = -60.0;
};

// The place in a picture from -1 (full scale below) to 1 (full scale above). What lies beyond is cut off.
double ScaleAmplitude(double inSample, WaveformStyle const& inStyle);

} // namespace SonaroHost
