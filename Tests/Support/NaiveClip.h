#pragma once

#include "Support/Fakes.h"

#include <map>
#include <vector>

namespace SN::Testing
{

// What a stream and a clip mean, worked out sample by sample in double precision over the whole range at
// once: no blocks, no buffers, no graph. Times count in frames of one rate.
struct NaiveStream
{
	double Sample(unsigned long long inChannel, long long inFrame) const
	{
		long long const frame = inFrame - mPreviewOffset;
		unsigned long long const channel =
			mChannelIndex < 0 ? inChannel : static_cast<unsigned>(mChannelIndex);
		bool const exists = mChannelIndex < 0 ? inChannel < mSourceChannels : inChannel == 0;
		return exists && frame >= 0 && frame < mLength ? static_cast<double>(PositionSample(channel, frame))
													   : 0.0;
	}

	unsigned mSourceChannels = 1;
	long long mLength = 0;
	int mChannelIndex = -1;
	long long mPreviewOffset = 0;
};

struct NaiveClip
{
	// By channel and frame.
	Samples Render(long long inStart, unsigned inFrames, unsigned inChannels) const
	{
		Samples out(inChannels, std::vector<float>(inFrames));
		for (auto const& [stream, channels] : mStreams)
		{
			for (auto const& [outChannel, streamChannel] : channels)
			{
				for (unsigned frame = 0; outChannel < inChannels && frame < inFrames; ++frame)
				{
					out[outChannel][frame] = static_cast<float>(
						mGain * stream.Sample(streamChannel, inStart + mStartOffset + frame));
				}
			}
		}
		return out;
	}

	std::vector<std::pair<NaiveStream, AudioChannelMap>> mStreams;
	long long mStartOffset = 0;
	double mGain = 1.0;
};

} // namespace SN::Testing
