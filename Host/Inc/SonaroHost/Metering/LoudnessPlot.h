#pragma once

#include "SonaroHost/Metering/LoudnessSeries.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost
{

// A programme whose loudness over time is drawn.
struct PlottedLoudness
{
	std::string mTitle;
	std::shared_ptr<LoudnessSeries const> mSeries;
	// The loudness that it is brought to, in LUFS; drawn as a line.
	std::optional<double> mTarget = std::nullopt;
	// Why it has no loudness; written into the panel.
	std::string mNote = {};
};

// Where a plot is shown.
enum class PlotPlace
{
	// In a file of its own, with its own style.
	kFile,
	// Within a page, whose style has that of GetPlotStyle.
	kPage,
};

// In pixels.
struct PlotSize
{
	unsigned mWidth = 960;
	// Of one panel.
	unsigned mHeight = 300;
};

// An SVG with a panel for each programme, one below the other: momentary, short-term and integrated loudness over time
// on one scale of LUFS, with axes and a legend. What lies far below the loudest is left out. Colours follow the reader's
// light or dark theme, and lines differ by width and dashes, too. inPlots: at least one, with series.
std::string DrawLoudness(
	std::vector<PlottedLoudness> const& inPlots, PlotPlace inPlace, PlotSize inSize = {});

// The rules of CSS for plots in a page, which sets the colours --paper, --ink, --soft, --line, --momentary,
// --short-term, --integrated and --target.
std::string GetPlotStyle();

// The rules that set them, for light and dark screens and for paper.
std::string GetPlotColours();

} // namespace SonaroHost
