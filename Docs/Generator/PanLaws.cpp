#include "PanLaws.h"

#include "Panner/Algorithm/PanLaw.h"
#include "SvgText.h"

#include <functional>
#include <string>
#include <vector>

namespace SonaroDocuments
{

namespace
{

using namespace SN;

struct Curve
{
	char const* mName;
	char const* mColour;
	std::function<float(float inControl)> mValue;
};

struct Panel
{
	char const* mTitle;
	char const* mControl;
	std::vector<Curve> mCurves;
};

constexpr int kWidth = 300;
constexpr int kHeight = 180;
constexpr int kMargin = 44;
constexpr int kColumns = 2;
// The top of the scale.
constexpr double kLargest = 2.4;
constexpr int kSteps = 50;

constexpr char const* kLeftColour = "#1f77b4";
constexpr char const* kRightColour = "#d62728";
constexpr char const* kCenterColour = "#2ca02c";
constexpr char const* kLeftRearColour = "#17becf";
constexpr char const* kRightRearColour = "#ff7f0e";
constexpr char const* kPowerColour = "#555555";

Panel MakeStereoPanel(char const* inTitle, StereoGains (*inLaw)(float))
{
	return {inTitle, "pan",
		{
			{"left", kLeftColour, [inLaw](float inPan) { return inLaw(inPan).mLeft; }},
			{"right", kRightColour, [inLaw](float inPan) { return inLaw(inPan).mRight; }},
			{"power", kPowerColour,
				[inLaw](float inPan)
				{
					StereoGains const gains = inLaw(inPan);
					return gains.mLeft * gains.mLeft + gains.mRight * gains.mRight;
				}},
		}};
}

using SurroundLaw = std::function<SurroundGains(float inControl)>;

Panel MakeSurroundPanel(char const* inTitle, char const* inControl, SurroundLaw const& inLaw)
{
	return {inTitle, inControl,
		{
			{"left", kLeftColour, [inLaw](float inX) { return inLaw(inX).mLeft; }},
			{"right", kRightColour, [inLaw](float inX) { return inLaw(inX).mRight; }},
			{"centre", kCenterColour, [inLaw](float inX) { return inLaw(inX).mCenter; }},
			{"left surround", kLeftRearColour, [inLaw](float inX) { return inLaw(inX).mLeftSurround; }},
			{"right surround", kRightRearColour, [inLaw](float inX) { return inLaw(inX).mRightSurround; }},
			{"power", kPowerColour,
				[inLaw](float inX)
				{
					SurroundGains const g = inLaw(inX);
					return g.mLeft * g.mLeft + g.mRight * g.mRight + g.mCenter * g.mCenter +
						   g.mLeftSurround * g.mLeftSurround + g.mRightSurround * g.mRightSurround;
				}},
		}};
}

SurroundLaw AlongX(SurroundGains (*inLaw)(SurroundPosition const&), float inY, float inCenter)
{
	return [=](float inX) { return inLaw({.mX = inX, .mY = inY, .mCenter = inCenter}); };
}

SurroundLaw AlongY(SurroundGains (*inLaw)(SurroundPosition const&), float inX)
{
	return [=](float inY) { return inLaw({.mX = inX, .mY = inY, .mCenter = 0.0f}); };
}

std::string DrawAxes(Panel const& inPanel, int inLeft, int inTop)
{
	std::string text = Format("<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"none\" "
							  "stroke=\"#999\"/>\n<text x=\"%d\" y=\"%d\" font-weight=\"bold\">%s</text>\n",
		inLeft, inTop, kWidth, kHeight, inLeft, inTop - 8, inPanel.mTitle);
	for (int step = 0; step <= 4; ++step)
	{
		int const y = inTop + kHeight - kHeight * step / 4;
		int const x = inLeft + kWidth * step / 4;
		text += Format("<line x1=\"%d\" y1=\"%d\" x2=\"%d\" y2=\"%d\" stroke=\"#ddd\"/>\n", inLeft, y,
			inLeft + kWidth, y);
		text += Format("<text x=\"%d\" y=\"%d\" text-anchor=\"end\">%.1f</text>\n", inLeft - 5, y + 4,
			kLargest * step / 4.0);
		text += Format("<text x=\"%d\" y=\"%d\" text-anchor=\"middle\">%.2f</text>\n", x,
			inTop + kHeight + 14, step / 4.0);
	}
	return text + Format("<text x=\"%d\" y=\"%d\" text-anchor=\"middle\">%s</text>\n", inLeft + kWidth / 2,
					  inTop + kHeight + 28, inPanel.mControl);
}

std::string DrawCurve(Curve const& inCurve, int inLeft, int inTop)
{
	bool const isPower = inCurve.mColour == kPowerColour;
	std::string text = Format("<polyline fill=\"none\" stroke=\"%s\" stroke-width=\"%s\"%s points=\"",
		inCurve.mColour, isPower ? "2.5" : "1.5", isPower ? " stroke-dasharray=\"6 3\"" : "");
	for (int step = 0; step <= kSteps; ++step)
	{
		auto const control = static_cast<float>(step) / static_cast<float>(kSteps);
		double const value = static_cast<double>(inCurve.mValue(control));
		text += Format("%s%.1f,%.1f", step == 0 ? "" : " ",
			inLeft + static_cast<double>(kWidth) * step / kSteps, inTop + kHeight * (1.0 - value / kLargest));
	}
	return text + "\"/>\n";
}

std::string DrawLegend(Panel const& inPanel, int inLeft, int inTop)
{
	std::string text;
	int x = inLeft;
	for (Curve const& curve : inPanel.mCurves)
	{
		text += Format("<line x1=\"%d\" y1=\"%d\" x2=\"%d\" y2=\"%d\" stroke=\"%s\" stroke-width=\"3\"/>\n",
			x, inTop - 4, x + 14, inTop - 4, curve.mColour);
		text += Format("<text x=\"%d\" y=\"%d\">%s</text>\n", x + 19, inTop, curve.mName);
		x += 110;
	}
	return text;
}

} // namespace

std::string DrawPanLaws()
{
	Panel const panels[] = {
		MakeStereoPanel("Mono to stereo", &GetEqualPowerGains),
		MakeStereoPanel("Stereo to stereo, balance, adaptive", &GetSideKeepingGains),
		MakeSurroundPanel("Mono to 5.1, front, Center 0", "X", AlongX(&GetMonoSurroundGains, 0.0f, 0.0f)),
		MakeSurroundPanel("Stereo to 5.1, front, Center 0", "X", AlongX(&GetStereoSurroundGains, 0.0f, 0.0f)),
		MakeSurroundPanel("Mono to 5.1, front, Center 0.5", "X", AlongX(&GetMonoSurroundGains, 0.0f, 0.5f)),
		MakeSurroundPanel(
			"Stereo to 5.1, front, Center 0.5", "X", AlongX(&GetStereoSurroundGains, 0.0f, 0.5f)),
		MakeSurroundPanel("Mono to 5.1, front, Center 1", "X", AlongX(&GetMonoSurroundGains, 0.0f, 1.0f)),
		MakeSurroundPanel("Stereo to 5.1, front, Center 1", "X", AlongX(&GetStereoSurroundGains, 0.0f, 1.0f)),
		MakeSurroundPanel("Mono to 5.1, Y 0.5, Center 0", "X", AlongX(&GetMonoSurroundGains, 0.5f, 0.0f)),
		MakeSurroundPanel("Stereo to 5.1, Y 0.5, Center 0", "X", AlongX(&GetStereoSurroundGains, 0.5f, 0.0f)),
		MakeSurroundPanel("Mono to 5.1, X 0.25, Center 0", "Y", AlongY(&GetMonoSurroundGains, 0.25f)),
		MakeSurroundPanel("Stereo to 5.1, X 0.25, Center 0", "Y", AlongY(&GetStereoSurroundGains, 0.25f)),
	};
	constexpr int kCellWidth = kWidth + 2 * kMargin;
	constexpr int kCellHeight = kHeight + 2 * kMargin;
	constexpr int kHead = 50;
	int const rows = static_cast<int>(std::size(panels)) / kColumns;
	std::string text = Format("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
							  "font-family=\"sans-serif\" font-size=\"11\">\n"
							  "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n"
							  "<text x=\"%d\" y=\"18\" font-size=\"14\">Linear gain of each channel, and the "
							  "power in all of them for a full-scale input</text>\n",
		kCellWidth * kColumns, kCellHeight * rows + kHead, kMargin);
	text += DrawLegend(panels[2], kMargin, 38);
	for (int i = 0; i < static_cast<int>(std::size(panels)); ++i)
	{
		int const left = kMargin + i % kColumns * kCellWidth;
		int const top = kHead + kMargin / 2 + i / kColumns * kCellHeight;
		text += DrawAxes(panels[i], left, top);
		for (Curve const& curve : panels[i].mCurves)
		{
			text += DrawCurve(curve, left, top);
		}
	}
	return text + "</svg>\n";
}

} // namespace SonaroDocuments
