#pragma once

#include "SonaroHost/Waveform/WaveformStyle.h"

#include <string_view>

namespace SonaroHost
{

// The colours of a timeline's picture beside those of its waves. Texts stand on a panel or in a block's name strip alone,
// whatever background is chosen for the waves.
struct PictureColours
{
	// The ruler and the column of names.
	Colour mPanel;
	Colour mText;
	// Of what is not heard, and of remarks.
	Colour mFaintText;
	// Between lanes, which needs no contrast.
	Colour mSeparator;
	Colour mTick;
	// Of clips: behind the wave, behind the name, and the border.
	Colour mBlock;
	Colour mNameStrip;
	Colour mBorder;
	Colour mNestBorder;
	// The same of what is not heard.
	Colour mQuietLane;
	Colour mQuietBlock;
	Colour mQuietBorder;
	Colour mMissingBorder;
	// The line of a fade, and a wider one below it that keeps it apart from the wave.
	Colour mFade;
	Colour mFadeHalo;
};

PictureColours const& GetPictureColours(PictureTheme inTheme);

// Of one of OpenTimelineIO's names, in capitals or not, dark or light enough for the theme's panel and blocks; other
// names and none are as "RED".
Colour GetMarkerColour(std::string_view inName, PictureTheme inTheme);

// The contrast of two opaque colours by WCAG 2.1, from 1 to 21.
double GetContrast(Colour const& inA, Colour const& inB);

} // namespace SonaroHost
