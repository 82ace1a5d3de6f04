#include "StretchOptions.h"

namespace SonaroCommand
{

using SonaroHost::StretchEngine;

void StretchOptions::AddForSoundFiles(CLI::App& ioParser)
{
	ioParser
		.add_option("--speed", mSpeed,
			"Playback speed, 0.01 to 100: 2 is half as long and, without --keep-pitch, an octave up")
		->option_text("S");
	ioParser.add_option("--pitch", mSemitones, "Shift the pitch, -24 to 24 semitones; the length stays")
		->option_text("SEMITONES");
}

void StretchOptions::AddForAll(CLI::App& ioParser)
{
	ioParser.add_flag("--keep-pitch", mKeepsPitch,
		"Keep the pitch at speeds from 0.1 to 10, times the factor of --pitch; in a timeline, that of clips "
		"that do "
		"not say otherwise");
	ioParser
		.add_option("--stretch", mEngine,
			"What keeps and shifts pitches: scaler, omega or rubberband, as far as they are built in "
			"(default: omega)")
		->option_text("NAME")
		->check(CLI::IsMember({"scaler", "omega", "rubberband"}));
}

StretchEngine StretchOptions::ChooseEngine() const
{
	return mEngine == "scaler"       ? StretchEngine::kScaler
		   : mEngine == "omega"      ? StretchEngine::kOmega
		   : mEngine == "rubberband" ? StretchEngine::kRubberBand
									 : SonaroHost::kDefaultStretchEngine;
}

} // namespace SonaroCommand
