// Looks at the pixels of small pictures.

#include "Media.h"
#include "SonaroHost/Render/WaveformJob.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <memory>

namespace SonaroHost::Testing::WaveformPictureTest
{

// One letter a pixel, row by row.
using Rows = std::vector<std::string>;

class WaveformPicture : public testing::Test
{
protected:
	WaveformPicture()
	{
		mRequest.mInput = mFolder / "in.wav";
		mRequest.mOutput = mFolder / "out.png";
		mRequest.mStyle.mBackground = {255, 255, 255, 255};
		mRequest.mStyle.mWave = {0, 0, 0, 255};
		mRequest.mStyle.mRms = {255, 0, 0, 255};
	}

	// "." for the background, "#" for the wave, "r" for the RMS, " " for what is transparent, "?" for what is
	// in between.
	Rows Draw(Sound const& inSound)
	{
		WriteSound(mRequest.mInput, SF_FORMAT_WAV | SF_FORMAT_FLOAT, inSound);
		EXPECT_TRUE(WaveformJob(mRequest).Run());
		std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> const picture(
			cairo_image_surface_create_from_png(mRequest.mOutput.c_str()), &cairo_surface_destroy);
		EXPECT_EQ(cairo_surface_status(picture.get()), CAIRO_STATUS_SUCCESS);
		int const width = cairo_image_surface_get_width(picture.get());
		int const stride = cairo_image_surface_get_stride(picture.get());
		unsigned char const* const bytes = cairo_image_surface_get_data(picture.get());
		Rows rows;
		for (int y = 0; y < cairo_image_surface_get_height(picture.get()); ++y)
		{
			std::string& row = rows.emplace_back();
			for (int x = 0; x < width; ++x)
			{
				// Blue, green, red and, where there is any, alpha.
				unsigned char const* const pixel = bytes + y * stride + 4 * x;
				bool const hasAlpha = cairo_image_surface_get_format(picture.get()) == CAIRO_FORMAT_ARGB32;
				std::string const colour{reinterpret_cast<char const*>(pixel), 3};
				row += hasAlpha && pixel[3] == 0              ? ' '
					   : colour == "\xff\xff\xff"             ? '.'
					   : colour == std::string(3, '\0')       ? '#'
					   : colour == std::string("\0\0\xff", 3) ? 'r'
															  : '?';
			}
		}
		return rows;
	}

	TemporaryFolder mFolder;
	WaveformRequest mRequest;
};

TEST_F(WaveformPicture, ColumnsReachFromMinimumToMaximumAndTouch)
{
	mRequest.mSamplesPerColumn = 4;
	mRequest.mStyle.mHeight = 8;
	Sound const sound{1, 48000,
		{1, -1, 1, -1, 0.5f, 0.5f, -0.5f, -0.5f, 0.25f, 0, 0, 0.25f, -0.75f, -1, -0.75f, -1, 2, 2, 2, 2}};
	EXPECT_EQ(Draw(sound), (Rows{
							   "r...#",
							   "r...#",
							   "rr..#",
							   "rr#.#",
							   "rr.##",
							   "rr.##",
							   "r..##",
							   "r..#.",
						   }));
}

TEST_F(WaveformPicture, ChannelsAreStackedOrMerged)
{
	mRequest.mSamplesPerColumn = 2;
	mRequest.mStyle.mHeight = 8;
	mRequest.mStyle.mRms = {0, 0, 0, 255};
	Sound const sound{2, 48000, {1, 0.5f, 0, -0.5f, 1, 0, 0, -1}};
	EXPECT_EQ(Draw(sound), (Rows{
							   "##",
							   "##",
							   "..",
							   "..",
							   "..",
							   "#.",
							   "##",
							   ".#",
						   }));
	mRequest.mChannels = WaveformChannels::kMerged;
	EXPECT_EQ(Draw(sound), (Rows{
							   "##",
							   "##",
							   "##",
							   "##",
							   "##",
							   "##",
							   ".#",
							   ".#",
						   }));
}

TEST_F(WaveformPicture, DecibelsRaiseWhatIsSoftAndNoBackgroundIsTransparent)
{
	mRequest.mSamplesPerColumn = 2;
	mRequest.mStyle.mHeight = 8;
	mRequest.mStyle.mScale = AmplitudeScale::kDecibels;
	mRequest.mStyle.mFloorDecibels = -40.0;
	mRequest.mStyle.mBackground = {0, 0, 0, 0};
	mRequest.mStyle.mRms = {0, 0, 0, 255};
	EXPECT_EQ(Draw({1, 48000, {0.1f, -0.1f, 1.0f, -0.01f}}), (Rows{
																 " #",
																 " #",
																 "##",
																 "##",
																 "# ",
																 "# ",
																 "  ",
																 "  ",
															 }));
}

TEST_F(WaveformPicture, EachPixelShowsItsShareOfTheRange)
{
	// A single peak at each place in turn. Edges are off by up to a sixteenth of a pixel.
	mRequest.mWidth = 10;
	mRequest.mStyle.mHeight = 2;
	mRequest.mStyle.mRms = {0, 0, 0, 255};
	for (std::size_t const place : {0u, 90u, 105u, 549u, 999u})
	{
		Sound sound{1, 48000, std::vector<float>(1000, -0.01f)};
		sound.mSamples[place] = 1.0f;
		std::string const top = Draw(sound)[0];
		for (std::size_t x = 0; x < 10; ++x)
		{
			EXPECT_EQ(top[x] == '#', x == place / 100)
				<< "pixel " << x << ", peak at " << place << ": " << top;
		}
	}
}

} // namespace SonaroHost::Testing::WaveformPictureTest
