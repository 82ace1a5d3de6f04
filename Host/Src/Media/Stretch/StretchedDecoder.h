#pragma once

#include "BlockStretchDecoder.h"

namespace SonaroHost
{

// The samples of a recording that is a file stretched.
//
// Method  The file is converted to the speed times the ratio of the stretcher, and then stretched: so the speed is
//         exact, and what the ratio lacks is left to the pitch.
class StretchedDecoder final : public BlockStretchDecoder
{
public:
	// inFile: a decoder of the file, at its start.
	StretchedDecoder(AudioFileInfo const& inRecording, std::unique_ptr<SoundDecoder> inFile);

private:
	std::unique_ptr<TimeStretcher> MakeStretcher() override;
	Ratio GetConversion(TimeStretcher const& inStretcher) const override;
	std::int64_t FindEnd(std::int64_t inFileFrames) const override;
};

} // namespace SonaroHost
