#pragma once

#include "SonaroHost/Media/Stretch.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"

#include <CLI/CLI.hpp>

#include <string>

namespace SonaroCommand
{

// The options of every command that hears clips at other speeds and pitches, as they were given.
struct StretchOptions
{
	// Of sound files alone.
	double mSpeed = 1.0;
	double mSemitones = 0.0;
	// Of timelines, too.
	bool mKeepsPitch = false;
	std::string mEngine;

	// --speed and --pitch.
	void AddForSoundFiles(CLI::App& ioParser);
	// --keep-pitch and --stretch.
	void AddForAll(CLI::App& ioParser);

	SonaroHost::StretchEngine ChooseEngine() const;
	// What a request for sound files has of them.
	template <class Request>
	void Fill(Request& outRequest) const
	{
		outRequest.mSpeed = mSpeed;
		outRequest.mKeepsPitch = mKeepsPitch;
		outRequest.mSemitones = mSemitones;
		outRequest.mStretchEngine = ChooseEngine();
	}
	void Fill(SonaroHost::Otio::TimelineOptions& outOptions) const
	{
		outOptions.mKeepsPitch = mKeepsPitch;
		outOptions.mStretchEngine = ChooseEngine();
	}
};

} // namespace SonaroCommand
