#include "WaveformPicture.h"

#include "SonaroHost/Base/HostError.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

namespace SonaroHost
{

namespace
{

struct Destroyer
{
	void operator()(cairo_surface_t* inSurface) const { cairo_surface_destroy(inSurface); }
	void operator()(cairo_t* inCairo) const { cairo_destroy(inCairo); }
};

using Surface = std::unique_ptr<cairo_surface_t, Destroyer>;
using Cairo = std::unique_ptr<cairo_t, Destroyer>;

void Check(cairo_status_t inStatus)
{
	// A failed write is reported by the file itself.
	if (inStatus != CAIRO_STATUS_SUCCESS && inStatus != CAIRO_STATUS_WRITE_ERROR)
	{
		throw HostError(HostError::Kind::kOutput,
			std::string("the picture cannot be drawn: ") + cairo_status_to_string(inStatus));
	}
}

cairo_status_t WriteToFile(void* inFile, unsigned char const* inBytes, unsigned inCount)
{
	bool const isWritten = static_cast<OutputFile*>(inFile)->Write(inBytes, inCount) == inCount;
	return isWritten ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

// Pixels counted from the top down.
struct Extent
{
	double mTop = 0.0;
	double mBottom = 0.0;
};

// A channel's share of the height.
class Band
{
public:
	Band(WaveformStyle const& inStyle, std::size_t inChannel, std::size_t inChannels)
		: mStyle(inStyle),
		  mTop(
			  std::floor(static_cast<double>(inStyle.mHeight * inChannel) / static_cast<double>(inChannels))),
		  mHeight(std::floor(static_cast<double>(inStyle.mHeight * (inChannel + 1)) /
							 static_cast<double>(inChannels)) -
				  mTop)
	{
	}

	// The extent is at least a pixel high.
	Extent Find(float inMinimum, float inMaximum) const
	{
		Extent extent{FindY(inMaximum), FindY(inMinimum)};
		if (double const missing = 1.0 - (extent.mBottom - extent.mTop); missing > 0.0)
		{
			extent.mTop = std::clamp(extent.mTop - missing / 2.0, mTop, mTop + mHeight - 1.0);
			extent.mBottom = extent.mTop + 1.0;
		}
		return extent;
	}

private:
	double FindY(float inSample) const
	{
		return mTop + mHeight * (1.0 - ScaleAmplitude(static_cast<double>(inSample), mStyle)) / 2.0;
	}

	WaveformStyle const& mStyle;
	double mTop;
	double mHeight;
};

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
			AddWave(channel);
		}
		Fill(mStyle.mWave);
		for (std::size_t channel = 0; channel < mWaveform.mChannels.size(); ++channel)
		{
			AddRms(channel);
		}
		Fill(mStyle.mRms);
		Check(cairo_status(mCairo.get()));
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

	void AddPixel(unsigned inX, Extent const& inExtent)
	{
		cairo_rectangle(mCairo.get(), inX, inExtent.mTop, 1.0, inExtent.mBottom - inExtent.mTop);
	}

	Waveform::Column GetPixel(std::size_t inChannel, unsigned inX) const
	{
		std::size_t const columns = mWaveform.GetNumColumns();
		std::size_t const first = columns * inX / mWidth;
		return Join(
			mWaveform, inChannel, inChannel + 1, first, std::max(first + 1, columns * (inX + 1) / mWidth));
	}

	void AddWave(std::size_t inChannel)
	{
		Band const band(mStyle, inChannel, mWaveform.mChannels.size());
		Extent before;
		for (unsigned x = 0; x < mWidth; ++x)
		{
			Waveform::Column const column = GetPixel(inChannel, x);
			Extent const own = band.Find(column.mMinimum, column.mMaximum);
			Extent shown = own;
			if (x > 0)
			{
				shown.mTop = std::min(own.mTop, before.mBottom);
				shown.mBottom = std::max(own.mBottom, before.mTop);
			}
			AddPixel(x, shown);
			before = own;
		}
	}

	// The RMS is drawn around the middle, where the wave crosses it, and not beyond the wave itself.
	void AddRms(std::size_t inChannel)
	{
		Band const band(mStyle, inChannel, mWaveform.mChannels.size());
		for (unsigned x = 0; x < mWidth; ++x)
		{
			Waveform::Column const column = GetPixel(inChannel, x);
			if (column.mMinimum < 0.0f && column.mMaximum > 0.0f)
			{
				AddPixel(x, band.Find(std::max(-column.mRms, column.mMinimum),
								std::min(column.mRms, column.mMaximum)));
			}
		}
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
	Check(cairo_surface_status(surface.get()));
	Painter(surface.get(), inWaveform, inStyle, inWidth).Paint();
	Check(cairo_surface_write_to_png_stream(surface.get(), &WriteToFile, &ioFile));
}

void WriteWaveformSvg(
	Waveform const& inWaveform, WaveformStyle const& inStyle, unsigned inWidth, OutputFile& ioFile)
{
	Surface const surface(
		cairo_svg_surface_create_for_stream(&WriteToFile, &ioFile, inWidth, inStyle.mHeight));
	Check(cairo_surface_status(surface.get()));
	cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
	Painter(surface.get(), inWaveform, inStyle, inWidth).Paint();
	cairo_surface_finish(surface.get());
	Check(cairo_surface_status(surface.get()));
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
