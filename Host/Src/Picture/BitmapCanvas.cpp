#include "Canvas.h"
#include "Waveform/CairoHandles.h"

#include <pango/pangocairo.h>

#include <cmath>

namespace SonaroHost
{

namespace
{

cairo_status_t AppendBytes(void* ioText, unsigned char const* inBytes, unsigned inCount)
{
	static_cast<std::string*>(ioText)->append(reinterpret_cast<char const*>(inBytes), inCount);
	return CAIRO_STATUS_SUCCESS;
}

struct ObjectFree
{
	void operator()(PangoLayout* inLayout) const { g_object_unref(inLayout); }
	void operator()(PangoFontDescription* inFont) const { pango_font_description_free(inFont); }
};

class BitmapCanvas final : public Canvas
{
public:
	BitmapCanvas(unsigned inWidth, unsigned inHeight)
		: mSurface(MakeBitmap(inWidth, inHeight)),
		  mCairo(cairo_create(mSurface.get()))
	{
	}

	std::string Take() override
	{
		CheckCairo(cairo_status(mCairo.get()));
		std::string bytes;
		CheckCairo(cairo_surface_write_to_png_stream(mSurface.get(), &AppendBytes, &bytes));
		return bytes;
	}

	void BeginGroup(std::string_view, std::string_view) override {}
	void EndGroup() override {}
	void Fill(Box const& inBox, Colour const& inColour) override
	{
		SetColour(mCairo.get(), inColour);
		cairo_rectangle(mCairo.get(), inBox.mX, inBox.mY, inBox.mWidth, inBox.mHeight);
		cairo_fill(mCairo.get());
	}

	void Frame(Box const& inBox, Stroke const& inStroke) override
	{
		double const inset = inStroke.mWidth / 2.0;
		cairo_rectangle(mCairo.get(), inBox.mX + inset, inBox.mY + inset, inBox.mWidth - inStroke.mWidth,
			inBox.mHeight - inStroke.mWidth);
		DrawStroke(inStroke);
	}

	void DrawLine(std::vector<Point> const& inPoints, Stroke const& inStroke) override
	{
		AddPath(inPoints);
		DrawStroke(inStroke);
	}

	void FillShape(std::vector<Point> const& inPoints, Colour const& inColour) override
	{
		SetColour(mCairo.get(), inColour);
		AddPath(inPoints);
		cairo_fill(mCairo.get());
	}

	void FillExtents(
		double inX, std::vector<WaveformExtent> const& inExtents, Colour const& inColour) override
	{
		SetColour(mCairo.get(), inColour);
		AddExtents(mCairo.get(), inX, inExtents);
		cairo_fill(mCairo.get());
	}

	void Write(std::string const& inText, Box const& inBox, Lettering const& inLettering) override
	{
		if (inText.empty())
		{
			return;
		}
		std::unique_ptr<PangoLayout, ObjectFree> const layout(pango_cairo_create_layout(mCairo.get()));
		std::unique_ptr<PangoFontDescription, ObjectFree> const font(
			pango_font_description_from_string("sans-serif"));
		pango_font_description_set_absolute_size(font.get(), inLettering.mSize * PANGO_SCALE);
		pango_layout_set_font_description(layout.get(), font.get());
		pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
		// What is written from right to left begins at the left of its box as well.
		pango_layout_set_auto_dir(layout.get(), FALSE);
		pango_layout_set_text(layout.get(), inText.data(), static_cast<int>(inText.size()));
		int height = 0;
		pango_layout_get_pixel_size(layout.get(), nullptr, &height);
		cairo_save(mCairo.get());
		cairo_rectangle(mCairo.get(), inBox.mX, inBox.mY, inBox.mWidth, inBox.mHeight);
		cairo_clip(mCairo.get());
		SetColour(mCairo.get(), inLettering.mColour);
		cairo_move_to(mCairo.get(), inBox.mX, std::floor(inBox.mY + (inBox.mHeight - height) / 2.0));
		pango_cairo_show_layout(mCairo.get(), layout.get());
		cairo_restore(mCairo.get());
	}

private:
	void DrawStroke(Stroke const& inStroke)
	{
		constexpr double kDashes[] = {4.0, 3.0};
		SetColour(mCairo.get(), inStroke.mColour);
		cairo_set_line_width(mCairo.get(), inStroke.mWidth);
		cairo_set_dash(mCairo.get(), kDashes, inStroke.mIsDashed ? 2 : 0, 0.0);
		cairo_stroke(mCairo.get());
	}

	void AddPath(std::vector<Point> const& inPoints)
	{
		// A text leaves a place from which a line would go on.
		cairo_new_path(mCairo.get());
		for (Point const& point : inPoints)
		{
			cairo_line_to(mCairo.get(), point.mX, point.mY);
		}
	}

	Surface mSurface;
	Cairo mCairo;
};

} // namespace

std::unique_ptr<Canvas> MakeBitmapCanvas(unsigned inWidth, unsigned inHeight)
{
	return std::make_unique<BitmapCanvas>(inWidth, inHeight);
}

} // namespace SonaroHost
