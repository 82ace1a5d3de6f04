#include "WaveformPicture.h"

#include "CairoHandles.h"
#include "SonaroHost/Base/HostError.h"

#include <cairo-svg.h>

#include <cmath>
#include <string>

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

void Paint(
	cairo_surface_t* ioSurface, Waveform const& inWaveform, WaveformStyle const& inStyle, unsigned inWidth)
{
	Cairo const cairo(cairo_create(ioSurface));
	std::size_t const channels = inWaveform.mChannels.size();
	auto const fill = [&](auto const& inFind, Colour const& inColour)
	{
		for (std::size_t channel = 0; channel < channels; ++channel)
		{
			AddExtents(cairo.get(), 0.0,
				inFind(inWaveform, channel, inStyle, FindRoom(inStyle, channel, channels, inWidth)));
		}
		SetColour(cairo.get(), inColour);
		cairo_fill(cairo.get());
	};
	SetColour(cairo.get(), inStyle.mBackground);
	cairo_paint(cairo.get());
	fill(&FindWave, inStyle.mWave);
	fill(&FindRms, inStyle.mRms);
	CheckCairo(cairo_status(cairo.get()));
}

} // namespace

void WriteWaveformPng(
	Waveform const& inWaveform, WaveformStyle const& inStyle, unsigned inWidth, OutputFile& ioFile)
{
	Surface const surface = MakeBitmap(inWidth, inStyle.mHeight);
	Paint(surface.get(), inWaveform, inStyle, inWidth);
	CheckCairo(cairo_surface_write_to_png_stream(surface.get(), &WriteToFile, &ioFile));
}

void WriteWaveformSvg(
	Waveform const& inWaveform, WaveformStyle const& inStyle, unsigned inWidth, OutputFile& ioFile)
{
	Surface const surface(
		cairo_svg_surface_create_for_stream(&WriteToFile, &ioFile, inWidth, inStyle.mHeight));
	CheckCairo(cairo_surface_status(surface.get()));
	cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
	Paint(surface.get(), inWaveform, inStyle, inWidth);
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
