#include "ContentWindow.h"

#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>
#include <cstring>

namespace SonaroHost::Sequence
{

ContentWindow::ContentWindow(Generator const& inContent, SN::FrameRate const& inFrameRate,
	std::int64_t inFrames, std::shared_ptr<dsp::AudioBuffer> const& inScratch)
	: mContent(inContent),
	  mFrameRate(inFrameRate),
	  mCapacity(inFrames),
	  mScratch(inScratch),
	  mSamples(static_cast<std::size_t>(inFrames) * inScratch->GetNumChannels()),
	  mSounds(inScratch->GetNumChannels())
{
}

void ContentWindow::MoveTo(std::int64_t inFirst, std::int64_t inEnd, bool inIsBackwards)
{
	bool const follows = Follows(inFirst, inEnd, inIsBackwards);
	mIsBackwards = inIsBackwards;
	if (!follows)
	{
		std::fill(mSounds.begin(), mSounds.end(), Sound());
		mFirst = inFirst;
		mEnd = inEnd;
		Read(inFirst, inEnd, inIsBackwards);
		return;
	}
	std::int64_t const kept = std::max(inFirst, mFirst);
	std::int64_t const keptEnd = std::min(inEnd, mEnd);
	Keep(inFirst, inEnd, kept, keptEnd);
	if (inIsBackwards)
	{
		Read(inFirst, kept, true);
	}
	else
	{
		Read(keptEnd, inEnd, false);
	}
}

void ContentWindow::Keep(
	std::int64_t inFirst, std::int64_t inEnd, std::int64_t inKept, std::int64_t inKeptEnd)
{
	for (unsigned channel = 0; channel < mSounds.size(); ++channel)
	{
		float* const samples = GetSamples(channel, mFirst);
		std::memmove(samples + (inKept - inFirst), samples + (inKept - mFirst),
			static_cast<std::size_t>(inKeptEnd - inKept) * sizeof(float));
		Sound& sound = mSounds[channel];
		sound = {std::max(sound.mFirst, inKept), std::min(sound.mEnd, inKeptEnd)};
	}
	mFirst = inFirst;
	mEnd = inEnd;
}

void ContentWindow::Read(std::int64_t inFirst, std::int64_t inEnd, bool inIsBackwards)
{
	std::int64_t const frames = inEnd - inFirst;
	for (std::int64_t done = 0; done < frames;)
	{
		std::int64_t const count = std::min<std::int64_t>(frames - done, mScratch->GetCapacity());
		ReadPiece(inIsBackwards ? inEnd - done - count : inFirst + done, count, inIsBackwards);
		done += count;
	}
}

void ContentWindow::ReadPiece(std::int64_t inFirst, std::int64_t inCount, bool inIsBackwards)
{
	mScratch->SetUseSize(static_cast<unsigned>(inCount));
	mScratch->Zero();
	dsp::AudioSubBuffer piece;
	piece.Init(mScratch->GetNumChannels());
	piece.Assign(*mScratch, 0);
	mContent->GetAudioData(SN::TickTime(inFirst, mFrameRate), piece, inIsBackwards);
	for (unsigned channel = 0; channel < mSounds.size(); ++channel)
	{
		float* const samples = GetSamples(channel, inFirst);
		if (piece.IsChannelSilent(channel))
		{
			std::fill_n(samples, inCount, 0.0f);
			continue;
		}
		float const* const read = piece.GetChannel(channel);
		if (inIsBackwards)
		{
			std::reverse_copy(read, read + inCount, samples);
		}
		else
		{
			std::copy_n(read, inCount, samples);
		}
		Sound& sound = mSounds[channel];
		sound = sound.mFirst < sound.mEnd
					? Sound{std::min(sound.mFirst, inFirst), std::max(sound.mEnd, inFirst + inCount)}
					: Sound{inFirst, inFirst + inCount};
	}
}

} // namespace SonaroHost::Sequence
