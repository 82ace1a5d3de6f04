#pragma once

#include "Base/CurvePositions.h"
#include "BlockStretchDecoder.h"

namespace SonaroHost
{

class OmegaStretcher;

// The samples of a recording that is a file stretched along a ramp, by an engine whose ratio can change.
//
// Method  The file is converted by the factor of the pitch, and then stretched. Before each block of 256 samples the ratio
//         is set so that the block ends where the integral of the curve is: what a ratio is rounded by, the next one
//         makes up for.
class RampStretchDecoder final : public BlockStretchDecoder
{
public:
	// inFile: a decoder of the file, at its start.
	RampStretchDecoder(AudioFileInfo const& inRecording, std::unique_ptr<SoundDecoder> inFile);

private:
	std::unique_ptr<TimeStretcher> MakeStretcher() override;
	Ratio GetConversion(TimeStretcher const& inStretcher) const override;
	void PrepareBlock() override;
	std::int64_t FindEnd(std::int64_t inFileFrames) const override;

	// Frames of the converted file that pass up to a frame of the recording.
	double GetPassed(std::int64_t inFrame) const;

	CurvePositions mPositions;
	bool mIsBackwards;
	// Null before the first frame.
	OmegaStretcher* mOmega = nullptr;
	// What was stretched, in frames of the converted file as the engine counts them.
	double mPassed = 0.0;
};

} // namespace SonaroHost
