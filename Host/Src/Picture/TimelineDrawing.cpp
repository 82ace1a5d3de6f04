#include "SonaroHost/Picture/TimelineDrawing.h"

#include "RulerTicks.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Picture/PictureColours.h"
#include "TextFit.h"
#include "TimelineLayout.h"
#include "Waveform/WaveformPicture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

namespace SonaroHost
{

namespace
{

constexpr double kRulerText = 11.0;
constexpr double kSmallText = 10.0;
constexpr double kNameText = 12.0;
constexpr double kPadding = 4.0;
// Lines that stand closer together are thin, so that what lies below them is seen.
constexpr double kLeastDistance = 6.0;
constexpr double kFarAway = -1.0e9;

Colour Thin(Colour inColour, bool inIsThin)
{
	constexpr std::uint8_t kThinAlpha = 48;
	inColour.mAlpha = inIsThin ? kThinAlpha : inColour.mAlpha;
	return inColour;
}

// 0 where no text can be read.
double ChooseNameSize(double inHeight)
{
	return inHeight >= 18.0 ? kNameText : inHeight >= 12.0 ? kSmallText : inHeight >= 9.0 ? 8.0 : 0.0;
}

std::vector<Point> MakeCurve(
	TimelinePicture::Fade const& inFade, TimelineLayout const& inLayout, Box const& inWaves)
{
	constexpr int kCurveSteps = 24;
	int const steps = inFade.mShape == FadeShape::kLinear ? 1 : kCurveSteps;
	TimelinePicture::Span const& visible = inFade.mVisible;
	std::vector<Point> points;
	for (int i = 0; i <= steps; ++i)
	{
		double const time = visible.mStart + (visible.mEnd - visible.mStart) * i / steps;
		double const progress = (time - inFade.mSpan.mStart) / (inFade.mSpan.mEnd - inFade.mSpan.mStart);
		double const gain = GetFadeGain(inFade.mShape, inFade.mIsRising ? progress : 1.0 - progress);
		points.push_back({inLayout.GetX(time), inWaves.GetBottom() - gain * inWaves.mHeight});
	}
	return points;
}

// Draws a timeline on a canvas. All outlive this object.
class TimelinePainter
{
public:
	TimelinePainter(TimelinePicture const& inPicture, TimelineStyle const& inStyle,
		TimelineLayout const& inLayout, Canvas& ioCanvas)
		: mPicture(inPicture),
		  mStyle(inStyle),
		  mLayout(inLayout),
		  mColours(GetPictureColours(inStyle.mWave.mTheme)),
		  mCanvas(ioCanvas),
		  mTicks(MakeRulerTicks(inPicture, inLayout.GetRuler().mWidth, kRulerText))
	{
	}

	void Paint()
	{
		mCanvas.Fill({0.0, 0.0, mLayout.GetWidth(), mLayout.GetHeight()}, mStyle.mWave.mBackground);
		if (mLayout.GetNamesWidth() > 0.0)
		{
			mCanvas.Fill({0.0, 0.0, mLayout.GetNamesWidth(), mLayout.GetHeight()}, mColours.mPanel);
		}
		for (std::size_t lane = 0; lane < mPicture.mLanes.size(); ++lane)
		{
			PaintLane(lane);
		}
		if (mLayout.GetRuler().mHeight > 0.0)
		{
			PaintRuler();
			PaintMarkers();
		}
	}

private:
	void PaintRuler()
	{
		constexpr double kLongTick = 8.0;
		constexpr double kShortTick = 4.0;
		constexpr double kLabelStart = 3.0;
		Box const ruler = mLayout.GetRuler();
		mCanvas.BeginGroup("ruler", {});
		mCanvas.Fill(ruler, mColours.mPanel);
		double const names = mLayout.GetNamesWidth();
		mCanvas.Write(FitText(mPicture.mTitle, kRulerText, names - 2.0 * kPadding),
			{kPadding, 0.0, std::max(0.0, names - 2.0 * kPadding), ruler.mHeight},
			{mColours.mText, kRulerText});
		for (RulerTick const& tick : mTicks)
		{
			double const x = mLayout.GetX(tick.mTime);
			double const length = tick.mLabel.empty() ? kShortTick : kLongTick;
			mCanvas.Fill({std::min(x, ruler.GetRight() - 1.0), ruler.GetBottom() - length, 1.0, length},
				mColours.mTick);
			double const width = EstimateTextWidth(tick.mLabel, kRulerText);
			if (x + kLabelStart + width <= ruler.GetRight())
			{
				mCanvas.Write(tick.mLabel, {x + kLabelStart, 0.0, width, ruler.mHeight - kShortTick},
					{mColours.mText, kRulerText});
			}
		}
		mCanvas.EndGroup();
	}

	void PaintMarkers()
	{
		Box const box = mLayout.GetMarkers();
		if (box.mHeight <= 0.0)
		{
			return;
		}
		mCanvas.BeginGroup("markers", {});
		mCanvas.Fill(box, mColours.mPanel);
		for (std::size_t i = 0; i < mPicture.mMarkers.size(); ++i)
		{
			bool const isLast = i + 1 == mPicture.mMarkers.size();
			PaintFlag(mPicture.mMarkers[i],
				isLast ? box.GetRight() : mLayout.GetX(mPicture.mMarkers[i + 1].mSpan.mStart));
		}
		mCanvas.EndGroup();
		PaintMarkerLines(std::nullopt, {0.0, box.GetBottom(), 0.0, mLayout.GetHeight() - box.GetBottom()});
	}

	// inEnd: where the next one begins, in pixels.
	void PaintFlag(TimelinePicture::Marker const& inMarker, double inEnd)
	{
		constexpr double kFlagWidth = 8.0;
		constexpr double kRangeHeight = 3.0;
		Box const box = mLayout.GetMarkers();
		Colour const colour = GetMarkerColour(inMarker.mColour, mStyle.mWave.mTheme);
		double const x = mLayout.GetX(inMarker.mSpan.mStart);
		double const top = box.mY + 2.0;
		double const bottom = box.GetBottom() - kRangeHeight;
		mCanvas.BeginGroup("marker", Describe(inMarker));
		mCanvas.FillShape({{x, top}, {x + kFlagWidth, (top + bottom) / 2.0}, {x, bottom}}, colour);
		double const end = mLayout.GetX(inMarker.mSpan.mEnd);
		mCanvas.Fill({x, bottom, std::max(1.0, end - x), kRangeHeight}, colour);
		double const start = x + kFlagWidth + 2.0;
		double const room = std::min(inEnd, box.GetRight()) - start - kPadding;
		if (room > 0.0)
		{
			mCanvas.Write(FitText(inMarker.mName, kSmallText, room),
				{start, box.mY, room, box.mHeight - kRangeHeight}, {mColours.mText, kSmallText});
		}
		mCanvas.EndGroup();
	}

	void PaintLane(std::size_t inLane)
	{
		TimelinePicture::Lane const& lane = mPicture.mLanes[inLane];
		bool const isQuiet = !lane.mWhySilent.empty();
		Box const box = mLayout.GetLane(inLane);
		mCanvas.BeginGroup(isQuiet ? "quiet-lane" : "lane",
			lane.mPath + (isQuiet ? " (not heard: " + lane.mWhySilent + ")" : ""));
		if (isQuiet)
		{
			mCanvas.Fill(box, mColours.mQuietLane);
		}
		for (RulerTick const& tick : mTicks)
		{
			if (!tick.mLabel.empty() && mLayout.GetRuler().mHeight > 0.0)
			{
				mCanvas.Fill({mLayout.GetX(tick.mTime), box.mY, 1.0, box.mHeight}, mColours.mSeparator);
			}
		}
		PaintName(inLane);
		PaintBlockGrounds(inLane);
		PaintWaves(inLane);
		std::vector<Box> const boxes = FindBoxes(inLane);
		double last = kFarAway;
		for (std::size_t i = 0; i < boxes.size(); ++i)
		{
			if (boxes[i].mWidth > 0.0)
			{
				bool const isCrowded = std::max(boxes[i].mWidth, boxes[i].mX - last) < kLeastDistance;
				PaintBlock(lane.mBlocks[i], boxes[i], mLayout.GetStripHeight(inLane), isCrowded);
				last = boxes[i].mX;
			}
		}
		for (TimelinePicture::Fade const& fade : lane.mFades)
		{
			PaintFade(fade, mLayout.GetWaves(inLane));
		}
		PaintMarkerLines(inLane, box);
		mCanvas.EndGroup();
	}

	void PaintName(std::size_t inLane)
	{
		constexpr double kIndent = 12.0;
		constexpr double kLeastName = 70.0;
		constexpr double kLeastHeightWithReason = 34.0;
		constexpr double kLineHeight = 15.0;
		TimelinePicture::Lane const& lane = mPicture.mLanes[inLane];
		double const width = mLayout.GetNamesWidth();
		double const size = ChooseNameSize(mLayout.GetLane(inLane).mHeight);
		Box box = mLayout.GetLane(inLane);
		if (box.mHeight >= 4.0)
		{
			mCanvas.Fill({0.0, box.mY, mLayout.GetWidth(), 1.0}, mColours.mSeparator);
		}
		if (width <= 0.0 || size <= 0.0)
		{
			return;
		}
		box.mX = kPadding +
				 std::min(kIndent * static_cast<double>(lane.mDepth), std::max(0.0, width - kLeastName));
		box.mWidth = width - box.mX - kPadding;
		bool const isQuiet = !lane.mWhySilent.empty();
		if (isQuiet && box.mHeight >= kLeastHeightWithReason)
		{
			Box const second{box.mX, box.mY + box.mHeight / 2.0, box.mWidth, kLineHeight};
			mCanvas.Write(
				FitText(lane.mWhySilent, kSmallText, box.mWidth), second, {mColours.mFaintText, kSmallText});
			box = {box.mX, second.mY - kLineHeight, box.mWidth, kLineHeight};
		}
		mCanvas.Write(FitText(lane.mName, size, box.mWidth), box,
			{isQuiet ? mColours.mFaintText : mColours.mText, size});
	}

	void PaintBlockGrounds(std::size_t inLane)
	{
		// On a background of its own the picture keeps that.
		bool const isOwn =
			!(mStyle.mWave.mBackground == WaveformStyle::Make(mStyle.mWave.mTheme).mBackground);
		std::vector<Box> const boxes = FindBoxes(inLane);
		for (std::size_t i = 0; i < boxes.size(); ++i)
		{
			auto const kind = mPicture.mLanes[inLane].mBlocks[i].mKind;
			bool const isHeard =
				kind == TimelinePicture::BlockKind::kClip || kind == TimelinePicture::BlockKind::kNest;
			Box const& box = boxes[i];
			double const strip = std::min(mLayout.GetStripHeight(inLane), box.mHeight);
			if (box.mWidth > 0.0 && !isOwn)
			{
				mCanvas.Fill(box, isHeard ? mColours.mBlock : mColours.mQuietBlock);
			}
			if (box.mWidth > 0.0 && strip > 0.0)
			{
				mCanvas.Fill({box.mX, box.mY, box.mWidth, strip},
					isHeard ? mColours.mNameStrip : mColours.mQuietBlock);
			}
		}
	}

	void PaintWaves(std::size_t inLane)
	{
		TimelinePicture::Lane const& lane = mPicture.mLanes[inLane];
		Box const box = mLayout.GetWaves(inLane);
		if (lane.mColumns.empty())
		{
			return;
		}
		Waveform const waveform{0, 0, {lane.mColumns}};
		WaveformRoom const room{box.mY, box.mHeight, static_cast<unsigned>(box.mWidth)};
		mCanvas.FillExtents(box.mX, FindWave(waveform, 0, mStyle.mWave, room), mStyle.mWave.mWave);
		mCanvas.FillExtents(box.mX, FindRms(waveform, 0, mStyle.mWave, room), mStyle.mWave.mRms);
	}

	void PaintBlock(
		TimelinePicture::Block const& inBlock, Box const& inBox, double inStripHeight, bool inIsCrowded)
	{
		constexpr double kLeastFrame = 3.0;
		using Kind = TimelinePicture::BlockKind;
		bool const isMissing = inBlock.mKind == Kind::kMissing;
		mCanvas.BeginGroup(inBlock.mKind == Kind::kNest ? "nest"
						   : isMissing                  ? "missing-clip"
														: "clip",
			Describe(inBlock));
		if (inIsCrowded || inBox.mWidth < kLeastFrame || inBox.mHeight < kLeastFrame)
		{
			mCanvas.Fill({inBox.mX, inBox.mY, 1.0, inBox.mHeight}, Thin(GetBorder(inBlock), inIsCrowded));
		}
		else
		{
			mCanvas.Frame(inBox, {GetBorder(inBlock), 1.0, isMissing});
		}
		double const room = inBox.mWidth - 2.0 * kPadding;
		if (inStripHeight > 0.0 && room > 0.0)
		{
			bool const isHeard = inBlock.mKind == Kind::kClip || inBlock.mKind == Kind::kNest;
			mCanvas.Write(FitText(inBlock.mName, kSmallText, room),
				{inBox.mX + kPadding, inBox.mY, room, inStripHeight},
				{isHeard ? mColours.mText : mColours.mFaintText, kSmallText});
		}
		mCanvas.EndGroup();
	}

	void PaintFade(TimelinePicture::Fade const& inFade, Box const& inWaves)
	{
		constexpr double kLeastFade = 2.0;
		constexpr double kHaloWidth = 3.5;
		constexpr double kLineWidth = 1.5;
		std::vector<Point> const points = MakeCurve(inFade, mLayout, inWaves);
		if (points.back().mX - points.front().mX < kLeastFade)
		{
			return;
		}
		mCanvas.BeginGroup(inFade.mIsRising ? "fade-in" : "fade-out",
			std::string(inFade.mIsRising ? "fade in, " : "fade out, ") + DescribeTimes(inFade.mSpan));
		mCanvas.DrawLine(points, {mColours.mFadeHalo, kHaloWidth});
		mCanvas.DrawLine(points, {mColours.mFade, kLineWidth});
		mCanvas.EndGroup();
	}

	// The lines of a lane's markers, or over all lanes those of the timeline.
	void PaintMarkerLines(std::optional<std::size_t> inLane, Box const& inBox)
	{
		double last = kFarAway;
		for (TimelinePicture::Marker const& marker : mPicture.mMarkers)
		{
			if (marker.mLane != inLane)
			{
				continue;
			}
			double const x = std::min(mLayout.GetX(marker.mSpan.mStart), mLayout.GetWidth() - 1.0) + 0.5;
			Colour const colour = GetMarkerColour(marker.mColour, mStyle.mWave.mTheme);
			mCanvas.BeginGroup("marker-line", Describe(marker));
			mCanvas.DrawLine({{x, inBox.mY}, {x, inBox.GetBottom()}},
				{Thin(colour, std::abs(x - last) < kLeastDistance), 1.0, true});
			mCanvas.EndGroup();
			last = x;
		}
	}

	// Where blocks stand; empty boxes for those that fall into the pixel of another one.
	std::vector<Box> FindBoxes(std::size_t inLane) const
	{
		Box const lane = mLayout.GetLane(inLane);
		std::vector<Box> boxes;
		double last = -1.0;
		for (TimelinePicture::Block const& block : mPicture.mLanes[inLane].mBlocks)
		{
			double const x = mLayout.GetX(block.mSpan.mStart);
			double const right = std::min(mLayout.GetX(block.mSpan.mEnd), lane.GetRight());
			Box box{x, lane.mY + 1.0, std::max(1.0, right - x), lane.mHeight - 1.0};
			if (right - x < 1.0 && x < last)
			{
				box = {};
			}
			last = std::max(last, box.GetRight());
			boxes.push_back(box);
		}
		return boxes;
	}

	Colour const& GetBorder(TimelinePicture::Block const& inBlock) const
	{
		switch (inBlock.mKind)
		{
		case TimelinePicture::BlockKind::kNest:
			return mColours.mNestBorder;
		case TimelinePicture::BlockKind::kSilent:
			return mColours.mQuietBorder;
		case TimelinePicture::BlockKind::kMissing:
			return mColours.mMissingBorder;
		case TimelinePicture::BlockKind::kClip:
			break;
		}
		return mColours.mBorder;
	}

	std::string Describe(TimelinePicture::Block const& inBlock) const
	{
		return inBlock.mName + ", " + DescribeTimes(inBlock.mSpan) +
			   (inBlock.mReason.empty() ? "" : " (not heard: " + inBlock.mReason + ")");
	}

	std::string DescribeTimes(TimelinePicture::Span const& inSpan) const
	{
		return FormatRulerTime(mPicture, inSpan.mStart) + " to " + FormatRulerTime(mPicture, inSpan.mEnd);
	}

	std::string Describe(TimelinePicture::Marker const& inMarker) const
	{
		bool const isPoint = inMarker.mSpan.mStart == inMarker.mSpan.mEnd;
		std::string text = inMarker.mName.empty() ? "marker" : inMarker.mName;
		text += ", " +
				(isPoint ? FormatRulerTime(mPicture, inMarker.mSpan.mStart) : DescribeTimes(inMarker.mSpan));
		text += inMarker.mLane ? ", " + mPicture.mLanes[*inMarker.mLane].mPath : "";
		return text + (inMarker.mComment.empty() ? "" : ": " + inMarker.mComment);
	}

	TimelinePicture const& mPicture;
	TimelineStyle const& mStyle;
	TimelineLayout const& mLayout;
	PictureColours const& mColours;
	Canvas& mCanvas;
	std::vector<RulerTick> mTicks;
};

// The bytes of the picture on an empty canvas of the height.
std::string DrawTimeline(
	TimelinePicture const& inPicture, TimelineStyle const& inStyle, unsigned inHeight, Canvas& ioCanvas)
{
	TimelineLayout const layout(inPicture, inStyle.mWidth, inHeight);
	TimelinePainter(inPicture, inStyle, layout, ioCanvas).Paint();
	return ioCanvas.Take();
}

} // namespace

unsigned ChoosePictureHeight(TimelinePicture const& inPicture, TimelineStyle const& inStyle)
{
	std::size_t const lanes = inPicture.mLanes.size();
	unsigned const height =
		inStyle.mHeight.value_or(std::min(TimelineLayout::FindGoodHeight(inPicture), kMaxPictureSize));
	if (height < lanes || height > kMaxPictureSize)
	{
		Refuse("a picture of " + std::to_string(lanes) + " bands must be " + std::to_string(lanes) + " to " +
			   std::to_string(kMaxPictureSize) + " pixels high, not " + std::to_string(height));
	}
	return height;
}

std::string DrawTimelineSvg(TimelinePicture const& inPicture, TimelineStyle const& inStyle)
{
	unsigned const height = ChoosePictureHeight(inPicture, inStyle);
	return DrawTimeline(inPicture, inStyle, height, *MakeSvgCanvas(inStyle.mWidth, height, inPicture.mTitle));
}

std::string DrawTimelinePng(TimelinePicture const& inPicture, TimelineStyle const& inStyle)
{
	unsigned const height = ChoosePictureHeight(inPicture, inStyle);
	CheckBitmapSize(inStyle.mWidth, height);
	return DrawTimeline(inPicture, inStyle, height, *MakeBitmapCanvas(inStyle.mWidth, height));
}

} // namespace SonaroHost
