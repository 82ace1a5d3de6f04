#pragma once

#include "GraphTools.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace SonaroHost::Sequence
{

// The stretch of a content that a converter reads at present. It moves along with the reading: what it holds already is
// kept, and the content is asked for what follows, in the order in which it is played, so that effects within it
// run on. Anywhere else it reads the whole stretch, the earliest played first.
//
// Threads  One at a time. Nothing allocates after the constructor.
class ContentWindow
{
public:
	// inFrames: the longest stretch. inScratch: what the content is read into, a buffer of its channels.
	ContentWindow(Generator const& inContent, SN::FrameRate const& inFrameRate, std::int64_t inFrames,
		std::shared_ptr<dsp::AudioBuffer> const& inScratch);

	// Whether a move would keep what is held already.
	bool Follows(std::int64_t inFirst, std::int64_t inEnd, bool inIsBackwards) const
	{
		return mFirst < mEnd && mIsBackwards == inIsBackwards &&
			   (inIsBackwards ? inEnd <= mEnd && inEnd >= mFirst : inFirst >= mFirst && inFirst <= mEnd);
	}
	// Moves to the frames from inFirst to inEnd. inIsBackwards: they are played from the highest to the lowest.
	void MoveTo(std::int64_t inFirst, std::int64_t inEnd, bool inIsBackwards);
	// What comes next does not follow what was read before, wherever it is.
	void Forget() { mEnd = mFirst; }

	// The samples from the first frame on.
	float const* GetChannel(unsigned inChannel) const
	{
		return mSamples.data() + static_cast<std::size_t>(inChannel) * static_cast<std::size_t>(mCapacity);
	}
	// Whether the content flagged all of it as silence.
	bool IsSilent(unsigned inChannel) const
	{
		Sound const& sound = mSounds[inChannel];
		return sound.mFirst >= sound.mEnd || sound.mEnd <= mFirst || sound.mFirst >= mEnd;
	}

private:
	// Frames outside of which a channel is silent.
	struct Sound
	{
		std::int64_t mFirst = 0;
		std::int64_t mEnd = 0;
	};

	float* GetSamples(unsigned inChannel, std::int64_t inFrame)
	{
		return mSamples.data() + inChannel * mCapacity + (inFrame - mFirst);
	}
	// Brings the frames that are kept, from inKept to inKeptEnd, to their new places.
	void Keep(std::int64_t inFirst, std::int64_t inEnd, std::int64_t inKept, std::int64_t inKeptEnd);
	// Reads frames into their places.
	void Read(std::int64_t inFirst, std::int64_t inEnd, bool inIsBackwards);
	void ReadPiece(std::int64_t inFirst, std::int64_t inCount, bool inIsBackwards);

	Generator mContent;
	SN::FrameRate mFrameRate;
	std::int64_t mCapacity;
	std::shared_ptr<dsp::AudioBuffer> mScratch;
	// Channel after channel.
	std::vector<float> mSamples;
	std::vector<Sound> mSounds;
	std::int64_t mFirst = 0;
	std::int64_t mEnd = 0;
	bool mIsBackwards = false;
};

} // namespace SonaroHost::Sequence
