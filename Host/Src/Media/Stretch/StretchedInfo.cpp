#include "StretchedInfo.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

AudioFileInfo MakeStretched(AudioFileInfo inFile, Stretch const& inStretch)
{
	inFile.mStretch = inStretch;
	inFile.mFileFrames = std::exchange(inFile.mFrames, inStretch.CountFrames(inFile.mFrames));
	return inFile;
}

AudioFileInfo GetFileOf(AudioFileInfo inRecording)
{
	if (inRecording.mStretch)
	{
		inRecording.mStretch.reset();
		inRecording.mFrames = std::exchange(inRecording.mFileFrames, 0);
	}
	return inRecording;
}

std::int64_t GetFrameOfFile(AudioFileInfo const& inRecording, std::int64_t inFrame)
{
	if (!inRecording.mStretch)
	{
		return inFrame;
	}
	Stretch const& stretch = *inRecording.mStretch;
	return std::min(stretch.mFirstFrame + (Ratio(inFrame) * stretch.mSpeed).Floor(), inRecording.mFileFrames);
}

} // namespace SonaroHost
