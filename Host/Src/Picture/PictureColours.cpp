#include "SonaroHost/Picture/PictureColours.h"

#include "SonaroHost/Base/PrintableText.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace SonaroHost
{

namespace
{

constexpr PictureColours kLightColours{
	.mPanel = {243, 245, 248},
	.mText = {26, 34, 44},
	.mFaintText = {84, 94, 108},
	.mSeparator = {206, 212, 220},
	.mTick = {110, 120, 134},
	.mBlock = {234, 241, 249},
	.mNameStrip = {214, 227, 242},
	.mBorder = {62, 103, 150},
	.mNestBorder = {107, 74, 150},
	.mQuietLane = {236, 238, 240},
	.mQuietBlock = {226, 228, 231},
	.mQuietBorder = {112, 117, 124},
	.mMissingBorder = {176, 32, 32},
	.mFade = {168, 62, 0},
	.mFadeHalo = {255, 255, 255},
};

constexpr PictureColours kDarkColours{
	.mPanel = {30, 34, 41},
	.mText = {232, 236, 241},
	.mFaintText = {164, 173, 185},
	.mSeparator = {58, 64, 74},
	.mTick = {140, 149, 162},
	.mBlock = {27, 38, 52},
	.mNameStrip = {38, 56, 78},
	.mBorder = {110, 155, 205},
	.mNestBorder = {176, 148, 224},
	.mQuietLane = {38, 40, 44},
	.mQuietBlock = {46, 49, 54},
	.mQuietBorder = {142, 147, 155},
	.mMissingBorder = {255, 122, 112},
	.mFade = {255, 178, 92},
	.mFadeHalo = {16, 18, 22},
};

struct MarkerColour
{
	std::string_view mName;
	Colour mLight;
	Colour mDark;
};

constexpr MarkerColour kMarkerColours[] = {
	{"red", {200, 30, 30}, {255, 105, 97}},
	{"pink", {206, 64, 122}, {255, 158, 196}},
	{"orange", {188, 88, 0}, {255, 165, 60}},
	{"yellow", {138, 112, 0}, {245, 214, 70}},
	{"green", {28, 126, 48}, {96, 206, 112}},
	{"cyan", {0, 122, 140}, {84, 208, 226}},
	{"blue", {36, 84, 204}, {120, 164, 255}},
	{"purple", {116, 56, 180}, {190, 144, 248}},
	{"magenta", {176, 28, 166}, {244, 120, 236}},
	{"black", {0, 0, 0}, {150, 154, 160}},
	{"white", {118, 122, 128}, {255, 255, 255}},
};

// By the definition of sRGB.
double GetLuminance(Colour const& inColour)
{
	auto const linear = [](std::uint8_t inPart)
	{
		double const part = inPart / 255.0;
		return part <= 0.04045 ? part / 12.92 : zorvcore::math::Pow((part + 0.055) / 1.055, 2.4);
	};
	return 0.2126 * linear(inColour.mRed) + 0.7152 * linear(inColour.mGreen) +
		   0.0722 * linear(inColour.mBlue);
}

} // namespace

PictureColours const& GetPictureColours(PictureTheme inTheme)
{
	return inTheme == PictureTheme::kLight ? kLightColours : kDarkColours;
}

Colour GetMarkerColour(std::string_view inName, PictureTheme inTheme)
{
	std::string const name = ToLower(std::string(inName));
	auto const* found = std::ranges::find(kMarkerColours, name, &MarkerColour::mName);
	MarkerColour const& entry = found != std::end(kMarkerColours) ? *found : kMarkerColours[0];
	return inTheme == PictureTheme::kLight ? entry.mLight : entry.mDark;
}

double GetContrast(Colour const& inA, Colour const& inB)
{
	double const a = GetLuminance(inA) + 0.05;
	double const b = GetLuminance(inB) + 0.05;
	return std::max(a, b) / std::min(a, b);
}

} // namespace SonaroHost
