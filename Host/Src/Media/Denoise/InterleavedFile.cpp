#include "InterleavedFile.h"

#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kHeldFrames = 2048;

} // namespace

InterleavedFile::InterleavedFile(Opener inOpen, std::int64_t inFrames, SN::FrameRate const& inRate)
	: mOpen(std::move(inOpen)),
	  mDecoder(mOpen()),
	  mFrames(inFrames),
	  mRate(inRate),
	  mHeld(static_cast<std::size_t>(kHeldFrames) * mDecoder->GetNumChannels())
{
}

void InterleavedFile::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool)
{
	Read(inBuffer.GetChannel(0), inTime.ToFrame64(mRate), inBuffer.GetUseSize());
	inBuffer.NoteChannelWrite(0, inBuffer.GetUseSize());
}

void InterleavedFile::Read(float* outSamples, std::int64_t inFirst, unsigned inCount)
{
	std::int64_t const channels = mDecoder->GetNumChannels();
	for (unsigned done = 0; done < inCount;)
	{
		std::int64_t const sample = inFirst + done;
		std::int64_t const frame = sample / channels;
		if (sample < 0 || frame >= mFrames)
		{
			outSamples[done++] = 0.0f;
			continue;
		}
		Hold(frame);
		auto const offset = static_cast<unsigned>(sample - mHeldStart * channels);
		unsigned const count = std::min(inCount - done, static_cast<unsigned>(mHeld.size()) - offset);
		std::copy_n(mHeld.data() + offset, count, outSamples + done);
		done += count;
	}
}

void InterleavedFile::Hold(std::int64_t inFrame)
{
	if (mHeldStart >= 0 && inFrame >= mHeldStart && inFrame < mHeldStart + kHeldFrames)
	{
		return;
	}
	mHeldStart = -1;
	MoveTo(inFrame);
	std::int64_t const wanted = std::min(kHeldFrames, mFrames - inFrame);
	std::int64_t const count = mDecoder->GetPosition() == inFrame ? mDecoder->Read(mHeld.data(), wanted) : 0;
	if (count < wanted)
	{
		mFrames = std::max(std::min(mFrames, inFrame + count), std::int64_t{0});
	}
	std::fill(mHeld.begin() + count * mDecoder->GetNumChannels(), mHeld.end(), 0.0f);
	mHeldStart = inFrame;
}

void InterleavedFile::MoveTo(std::int64_t inFrame)
{
	if (mDecoder->IsSeekExact() && mDecoder->GetPosition() != inFrame)
	{
		mDecoder->SeekTo(std::max<std::int64_t>(inFrame - mDecoder->GetPrerollFrames(), 0));
	}
	if (mDecoder->GetPosition() > inFrame)
	{
		mDecoder = mOpen();
	}
	while (mDecoder->GetPosition() < inFrame)
	{
		std::int64_t const wanted = std::min(kHeldFrames, inFrame - mDecoder->GetPosition());
		if (mDecoder->Read(mHeld.data(), wanted) < wanted)
		{
			break;
		}
	}
}

} // namespace SonaroHost
