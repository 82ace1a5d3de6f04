#include "StretchedDecoder.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

StretchedDecoder::StretchedDecoder(AudioFileInfo const& inRecording, std::unique_ptr<SoundDecoder> inFile)
	: BlockStretchDecoder(inRecording, std::move(inFile))
{
}

std::unique_ptr<TimeStretcher> StretchedDecoder::MakeStretcher()
{
	Stretch const& stretch = *GetRecording().mStretch;
	return MakeTimeStretcher(
		stretch.mEngine, stretch.mPitch / stretch.mSpeed, GetNumChannels(), GetRecording().mSampleRate);
}

Ratio StretchedDecoder::GetConversion(TimeStretcher const& inStretcher) const
{
	return GetRecording().mStretch->mSpeed * inStretcher.GetRatio();
}

std::int64_t StretchedDecoder::FindEnd(std::int64_t inFileFrames) const
{
	return std::min(GetRecording().mFrames, GetRecording().mStretch->CountFrames(inFileFrames));
}

} // namespace SonaroHost
