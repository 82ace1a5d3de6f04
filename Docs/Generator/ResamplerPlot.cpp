#include "ResamplerPlot.h"

#include "ResamplerSubject.h"
#include "SvgText.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

namespace SonaroDocuments
{

namespace
{

using namespace SN::Testing;

constexpr unsigned kFrom = 44100;
constexpr unsigned kTo = 48000;
constexpr double kLowest = 20.0;
constexpr double kHighest = 20000.0;
constexpr int kTones = 61;
// Outputs that are left out at the start, and those that are measured.
constexpr unsigned kSettled = 8000;
constexpr unsigned kMeasured = 12000;

constexpr int kPlotWidth = 720;
constexpr int kPlotHeight = 400;
constexpr int kLeft = 60;
constexpr int kTop = 76;
// The lowest level of the scale.
constexpr int kFloor = -160;

// By subject.
constexpr char const* kColours[] = {"#d62728", "#ff7f0e", "#8c564b", "#9467bd", "#17becf", "#1f77b4"};

double GetHertz(int inTone)
{
	return kLowest * std::pow(kHighest / kLowest, inTone / (kTones - 1.0));
}

int GetX(double inHertz)
{
	return kLeft + static_cast<int>(
					   std::lround(kPlotWidth * std::log(inHertz / kLowest) / std::log(kHighest / kLowest)));
}

int GetY(int inDecibels)
{
	return kTop + kPlotHeight * std::clamp(inDecibels, kFloor, 0) / kFloor;
}

std::string DrawScales()
{
	std::string text = Format("<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"none\" "
							  "stroke=\"#999\"/>\n",
		kLeft, kTop, kPlotWidth, kPlotHeight);
	for (int level = 0; level >= kFloor; level -= 20)
	{
		text += Format("<line x1=\"%d\" y1=\"%d\" x2=\"%d\" y2=\"%d\" stroke=\"#ddd\"/>\n<text x=\"%d\" "
					   "y=\"%d\" text-anchor=\"end\">%d dB</text>\n",
			kLeft, GetY(level), kLeft + kPlotWidth, GetY(level), kLeft - 6, GetY(level) + 4, level);
	}
	for (int const hertz : {20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000})
	{
		int const x = GetX(hertz);
		text += Format("<line x1=\"%d\" y1=\"%d\" x2=\"%d\" y2=\"%d\" stroke=\"#ddd\"/>\n", x, kTop, x,
			kTop + kPlotHeight);
		text += Format(
			"<text x=\"%d\" y=\"%d\" text-anchor=\"middle\">%d</text>\n", x, kTop + kPlotHeight + 16, hertz);
	}
	return text +
		   Format("<text x=\"%d\" y=\"%d\" text-anchor=\"middle\">frequency of the tone in Hz</text>\n",
			   kLeft + kPlotWidth / 2, kTop + kPlotHeight + 34);
}

std::string DrawCurve(ResamplerSubject const& inSubject, char const* inColour)
{
	std::vector<Signal> inputs;
	for (int tone = 0; tone < kTones; ++tone)
	{
		// Enough for the longest filter.
		inputs.push_back(MakeTone(GetHertz(tone) / kFrom, kSettled + kMeasured));
	}
	auto const outputs = inSubject.mConvert(inputs, kFrom, kTo, kSettled + kMeasured);
	std::string text = Format("<polyline fill=\"none\" stroke=\"%s\" stroke-width=\"2\" points=\"", inColour);
	for (int tone = 0; tone < kTones; ++tone)
	{
		auto const output = outputs.begin() + tone;
		Signal const measured(output->begin() + kSettled, output->end());
		ToneFit const fit = FitTone(measured, GetHertz(tone) / kTo, 0.0, 1.0);
		// Whole decibels, which all machines agree on.
		int const noise = static_cast<int>(-std::lround(fit.mSignalToNoise));
		text += Format("%s%d,%d", tone == 0 ? "" : " ", GetX(GetHertz(tone)), GetY(noise));
	}
	return text + "\"/>\n";
}

} // namespace

std::string DrawResamplers()
{
	std::string text =
		Format("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
			   "font-family=\"sans-serif\" font-size=\"12\">\n"
			   "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n"
			   "<text x=\"%d\" y=\"22\" font-size=\"15\">Noise and images of a full-scale tone, "
			   "44100 to 48000 Hz, relative to the tone</text>\n",
			kLeft + kPlotWidth + 30, kTop + kPlotHeight + 50, kLeft);
	text += DrawScales();
	std::vector<ResamplerSubject> const subjects = ListResamplers();
	int x = kLeft;
	for (std::size_t i = 0; i < subjects.size(); ++i)
	{
		char const* const colour = kColours[i % std::size(kColours)];
		text += DrawCurve(subjects[i], colour);
		text += Format("<line x1=\"%d\" y1=\"46\" x2=\"%d\" y2=\"46\" stroke=\"%s\" stroke-width=\"3\"/>\n"
					   "<text x=\"%d\" y=\"50\">%s</text>\n",
			x, x + 16, colour, x + 21, subjects[i].mName.c_str());
		x += i == 3 ? 160 : 105;
	}
	return text + "</svg>\n";
}

} // namespace SonaroDocuments
