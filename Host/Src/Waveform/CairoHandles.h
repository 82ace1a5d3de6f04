#pragma once

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Waveform/WaveformStyle.h"
#include "WaveformExtents.h"

#include <cairo.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost
{

struct CairoFree
{
	void operator()(cairo_surface_t* inSurface) const { cairo_surface_destroy(inSurface); }
	void operator()(cairo_t* inCairo) const { cairo_destroy(inCairo); }
};

using Surface = std::unique_ptr<cairo_surface_t, CairoFree>;
using Cairo = std::unique_ptr<cairo_t, CairoFree>;

// Throws a HostError for what went wrong, except in writing, which the file itself reports.
inline void CheckCairo(cairo_status_t inStatus)
{
	if (inStatus != CAIRO_STATUS_SUCCESS && inStatus != CAIRO_STATUS_WRITE_ERROR)
	{
		throw HostError(HostError::Kind::kOutput,
			std::string("the picture cannot be drawn: ") + cairo_status_to_string(inStatus));
	}
}

// Throws a HostError when there is no memory for it.
inline Surface MakeBitmap(unsigned inWidth, unsigned inHeight)
{
	Surface surface(cairo_image_surface_create(
		CAIRO_FORMAT_ARGB32, static_cast<int>(inWidth), static_cast<int>(inHeight)));
	CheckCairo(cairo_surface_status(surface.get()));
	return surface;
}

inline void SetColour(cairo_t* ioCairo, Colour const& inColour)
{
	cairo_set_source_rgba(ioCairo, inColour.mRed / 255.0, inColour.mGreen / 255.0, inColour.mBlue / 255.0,
		inColour.mAlpha / 255.0);
}

// Adds extents to the path, pixel by pixel from inX on.
inline void AddExtents(cairo_t* ioCairo, double inX, std::vector<WaveformExtent> const& inExtents)
{
	for (std::size_t i = 0; i < inExtents.size(); ++i)
	{
		if (!inExtents[i].IsEmpty())
		{
			cairo_rectangle(ioCairo, inX + static_cast<double>(i), inExtents[i].mTop, 1.0,
				inExtents[i].mBottom - inExtents[i].mTop);
		}
	}
}

} // namespace SonaroHost
