#include "WaveformPicture.h"

#include "CairoHandles.h"
#include "SonaroHost/Base/HostError.h"
#include "WaveformExtents.h"

#include <cairo-svg.h>

#include <cmath>
#include <string>
#include <vector>

namespace SonaroHost
{

namespace
{

cairo_status_t WriteToFile(void* inFile, unsigned char const* inBytes, unsigned inCount)
{
	bool const isWritten = static_cast<OutputFile*>(inFile)->Write(inBytes, inCount) == inCount;
	return isWritten ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

// A channel's share of the height, down to a pixel.
WaveformRoom FindRoom(
	WaveformStyle const& inStyle, std::size_t inChannel, std::size_t inChannels, unsigned inWidth)
{
	auto const findTop = [&](std::size_t inIndex)
	{ return std::floor(static_cast<double>(inStyle.mHeight * inIndex) / static_cast<double>(inChannels)); };
	double const top = findTop(inChannel);
	return {top, findTop(inChannel + 1) - top, inWidth};
}

class Painter
{
public:
	Painter(cairo_surface_t* inSurface, Waveform const& inWaveform, WaveformStyle const& inStyle,
		unsigned inWidth)
		: mCairo(cairo_create(inSurface)),
		  mWaveform(inWaveform),
		  mStyle(inStyle),
		  mWidth(inWidth)
	{
	}

	void Paint()
	{
		SetColour(mStyle.mBackground);
		cairo_paint(mCairo.get());
		for (std::size_t channel = 0; channel < mWaveform.mChannels.size(); ++channel)
		{
			Add(FindWave(mWaveform, channel, mStyle, GetRoom(channel)));
		}
		Fill(mStyle.mWave);
		for (std::size_t channel = 0; channel < mWaveform.mChannels.size(); ++channel)
		{
			Add(FindRms(mWaveform, channel, mStyle, GetRoom(channel)));
		}
		Fill(mStyle.mRms);
		CheckCairo(cairo_status(mCairo.get()));
	}

private:
	void SetColour(Colour const& inColour)
	{
		cairo_set_source_rgba(mCairo.get(), inColour.mRed / 255.0, inColour.mGreen / 255.0,
			inColour.mBlue / 255.0, inColour.mAlpha / 255.0);
	}

	void Fill(Colour const& inColour)
	{
		SetColour(inColour);
		cairo_fill(mCairo.get());
	}

	void Add(std::vector<WaveformExtent> const& inExtents)
	{
		for (std::size_t x = 0; x < inExtents.size(); ++x)
		{
			if (!inExtents[x].IsEmpty())
			{
				cairo_rectangle(mCairo.get(), static_cast<double>(x), inExtents[x].mTop, 1.0,
					inExtents[x].mBottom - inExtents[x].mTop);
			}
		}
	}

	WaveformRoom GetRoom(std::size_t inChannel) const
	{
		return FindRoom(mStyle, inChannel, mWaveform.mChannels.size(), mWidth);
	}

	Cairo mCairo;
	Waveform const& mWaveform;
	WaveformStyle const& mStyle;
	unsigned mWidth;
};

} // namespace

void WriteWaveformPng(
	Waveform const& inWaveform, WaveformStyle const& inStyle, unsigned inWidth, OutputFile& ioFile)
{
	Surface const surface(cairo_image_surface_create(
		CAIRO_FORMAT_ARGB32, static_cast<int>(inWidth), static_cast<int>(inStyle.mHeight)));
	CheckCairo(cairo_surface_status(surface.get()));
	Painter(surface.get(), inWaveform, inStyle, inWidth).Paint();
	CheckCairo(cairo_surface_write_to_png_stream(surface.get(), &WriteToFile, &ioFile));
}

void WriteWaveformSvg(
	Waveform const& inWaveform, WaveformStyle const& inStyle, unsigned inWidth, OutputFile& ioFile)
{
	Surface const surface(
		cairo_svg_surface_create_for_stream(&WriteToFile, &ioFile, inWidth, inStyle.mHeight));
	CheckCairo(cairo_surface_status(surface.get()));
	cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
	Painter(surface.get(), inWaveform, inStyle, inWidth).Paint();
	cairo_surface_finish(surface.get());
	CheckCairo(cairo_surface_status(surface.get()));
}

void CheckBitmapSize(std::int64_t inWidth, std::int64_t inHeight)
{
	constexpr std::int64_t kMostPixels = std::int64_t{1} << 28;
	if (inWidth * inHeight > kMostPixels)
	{
		Refuse("a picture of " + std::to_string(inWidth) + " x " + std::to_string(inHeight) +
			   " pixels is too large for a bitmap; make it smaller or write .svg");
	}
}

} // namespace SonaroHost
