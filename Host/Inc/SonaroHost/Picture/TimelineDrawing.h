#pragma once

#include "SonaroHost/Picture/TimelinePicture.h"
#include "SonaroHost/Waveform/WaveformStyle.h"

#include <optional>
#include <string>

namespace SonaroHost
{

// What a picture of a timeline looks like.
struct TimelineStyle
{
	// Its height is not used.
	WaveformStyle mWave;
	// Pixels.
	unsigned mWidth = 1200;
	// Without a height it grows with the lanes, which become lower where there are many.
	std::optional<unsigned> mHeight;
};

// The height in pixels of a picture of so many lanes. Throws a HostError for a height that does not fit them.
unsigned ChoosePictureHeight(TimelinePicture const& inPicture, TimelineStyle const& inStyle);

// The picture as a whole SVG document, which may also stand within a page: its names are escaped, it has no
// declaration, no identifiers, no styles and nothing from elsewhere.
std::string DrawTimelineSvg(TimelinePicture const& inPicture, TimelineStyle const& inStyle);

// The same as the bytes of a PNG file. Throws a HostError when there is no memory for it.
std::string DrawTimelinePng(TimelinePicture const& inPicture, TimelineStyle const& inStyle);

} // namespace SonaroHost
