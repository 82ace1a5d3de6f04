#include "WaveFile.h"

#include "SampleBytes.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Serve
{

WaveFile::WaveFile(std::shared_ptr<GraphPool> inPool, LeftOut inLeftOut, EncoderFormat const& inFormat,
	std::string inTag, std::string inWhyInOneRun)
	: mPool(std::move(inPool)),
	  mLeftOut(std::move(inLeftOut)),
	  mFormat(inFormat),
	  mFrame(MakeFileFrame(inFormat)),
	  mTag(std::move(inTag)),
	  mWhyInOneRun(std::move(inWhyInOneRun))
{
}

double WaveFile::GetWarmUpSeconds() const
{
	return mWhyInOneRun.empty() ? 0.0 : static_cast<double>(mPool->GetWarmUpFrames()) / mFormat.mSampleRate;
}

std::string WaveFile::Read(std::int64_t inOffset, std::int64_t inMost, Clock::time_point inDeadline) const
{
	auto const header = static_cast<std::int64_t>(mFrame.mHeader.size());
	auto const cut = [&](std::string const& inBytes, std::int64_t inFirst)
	{ return inBytes.substr(static_cast<std::size_t>(inFirst), static_cast<std::size_t>(inMost)); };
	if (inOffset < header)
	{
		return cut(mFrame.mHeader, inOffset);
	}
	if (inOffset < header + mFrame.mSampleBytes)
	{
		return ReadSamples(inOffset - header, inMost, inDeadline);
	}
	return cut(mFrame.mTrailer, inOffset - header - mFrame.mSampleBytes);
}

void WaveFile::CheckRange(std::int64_t inOffset, std::int64_t inEnd) const
{
	std::int64_t const frameBytes = std::int64_t{GetSampleSize(mFormat.mFormat.mSamples)} *
									static_cast<std::int64_t>(mFormat.mLayout.size());
	auto const header = static_cast<std::int64_t>(mFrame.mHeader.size());
	std::int64_t const first = std::max<std::int64_t>(inOffset - header, 0) / frameBytes;
	std::int64_t const end = (std::min(inEnd - header, mFrame.mSampleBytes) + frameBytes - 1) / frameBytes;
	mPool->CheckRange(mLeftOut, {first, end - first});
}

std::string WaveFile::ReadSamples(
	std::int64_t inFirst, std::int64_t inMost, Clock::time_point inDeadline) const
{
	auto const channels = static_cast<unsigned>(mFormat.mLayout.size());
	std::int64_t const frameBytes = std::int64_t{channels} * GetSampleSize(mFormat.mFormat.mSamples);
	std::int64_t const most = std::min(inMost, mFrame.mSampleBytes - inFirst);
	std::int64_t const first = inFirst / frameBytes;
	std::int64_t const skipped = inFirst % frameBytes;
	// A read that is longer than a frame ends with one.
	std::int64_t const whole = (skipped + most) / frameBytes * frameBytes;
	std::int64_t const count = whole > skipped ? whole - skipped : most;
	std::int64_t const frames = (skipped + count + frameBytes - 1) / frameBytes;
	std::string bytes;
	bytes.reserve(static_cast<std::size_t>(frames * frameBytes));
	SampleBytes samples(mFormat, first);
	mPool->Render(mLeftOut, {first, frames}, inDeadline,
		[&](dsp::AudioBuffer const& inBlock) { samples.Append(inBlock, bytes); });
	return bytes.substr(static_cast<std::size_t>(skipped), static_cast<std::size_t>(count));
}

} // namespace SonaroHost::Serve
