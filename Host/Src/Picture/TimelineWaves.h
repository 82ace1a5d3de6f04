#pragma once

#include "SonaroHost/Picture/TimelinePicture.h"
#include "Waveform/WaveformBand.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// Hears the lanes of a picture while the whole programme is rendered.
// Threads: that of the render.
class TimelineWaves
{
public:
	// Of a programme with so many frames, in pictures up to so many pixels wide. inPicture: as MakeTimelinePicture has it.
	TimelineWaves(
		TimelinePicture const& inPicture, std::int64_t inFrames, int inSampleRate, unsigned inWidth);

	// For the view of the graph.
	std::map<std::string, SN::InterfaceRef<SN::IAudioMeterSetter>> const& GetTaps() const { return mTaps; }
	// Gets the mix from frame inFirstFrame of the programme on.
	void AddMix(dsp::AudioBuffer const& inBlock, std::int64_t inFirstFrame);
	// Hands the columns to the picture, after the render.
	void Fill(TimelinePicture& ioPicture) const;

private:
	// One for each lane; empty for those that are not heard.
	std::vector<SN::InterfaceRef<WaveformBand>> mBands;
	std::map<std::string, SN::InterfaceRef<SN::IAudioMeterSetter>> mTaps;
};

} // namespace SonaroHost
