#pragma once

#include "SonaroHost/Base/HostError.h"

#include <cairo.h>

#include <memory>
#include <string>

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

} // namespace SonaroHost
