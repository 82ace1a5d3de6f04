#include "Recording.h"

#include <sndfile.h>

#include <algorithm>
#include <stdexcept>

namespace SonaroBenchmarks
{

namespace
{

constexpr std::int64_t kFade = 96;

class Walk
{
public:
	Walk(Frames const& inExport, Start const& inStart)
		: mExport(inExport),
		  mStart(inStart),
		  mPlace(inStart.mPlace)
	{
	}

	// Beyond the end there is silence.
	Frame Get() const
	{
		auto const place = static_cast<std::size_t>(mPlace);
		return place < mExport.size() ? mExport[place] : Frame{};
	}
	void Step()
	{
		++mPlace;
		bool const isLooped = mStart.mLoopFirst < mStart.mLoopEnd && mStart.mPlace < mStart.mLoopEnd;
		mPlace = isLooped && mPlace == mStart.mLoopEnd ? mStart.mLoopFirst : mPlace;
	}

private:
	Frames const& mExport;
	Start mStart;
	std::int64_t mPlace;
};

} // namespace

Frames ReadFrames(std::filesystem::path const& inPath)
{
	SF_INFO info{};
	SNDFILE* const file = sf_open(inPath.c_str(), SFM_READ, &info);
	if (!file || info.channels != 2)
	{
		throw std::runtime_error("cannot read " + inPath.string() + " as stereo");
	}
	Frames frames(static_cast<std::size_t>(info.frames));
	sf_readf_float(file, &frames.data()->mLeft, info.frames);
	sf_close(file);
	return frames;
}

Frames RecordingDevice::TakeFrames()
{
	mFrames.resize(mCount);
	return std::move(mFrames);
}

void RecordingDevice::Take(float const* inSamples, unsigned inFrames)
{
	std::size_t const count = std::min<std::size_t>(inFrames, mFrames.size() - mCount);
	std::copy_n(inSamples, 2 * count, &mFrames.data()[mCount].mLeft);
	mCount += count;
	if (!mIsSound && std::any_of(inSamples, inSamples + 2 * inFrames, [](float in) { return in != 0.0f; }))
	{
		mSoundTime = std::chrono::steady_clock::now();
		mIsSound = true;
	}
}

Comparison CompareStarts(Frames const& inHeard, Frames const& inExport, std::vector<Start> const& inStarts)
{
	Comparison result;
	std::size_t at = 0;
	for (Start const& start : inStarts)
	{
		for (; at < inHeard.size() && inHeard[at].IsSilent(); ++at)
		{
			++result.mSilent;
		}
		result.mWrong += at == inHeard.size() ? 1 : 0;
		Walk walk(inExport, start);
		for (; at < inHeard.size() && inHeard[at] == walk.Get(); ++at)
		{
			walk.Step();
			++result.mCompared;
		}
		for (std::int64_t i = 0; i < kFade && at < inHeard.size(); ++i, ++at)
		{
			float const gain = static_cast<float>(kFade - i) / static_cast<float>(kFade + 1);
			result.mWrong += inHeard[at] == walk.Get() * gain ? 0 : 1;
			walk.Step();
			++result.mFaded;
		}
	}
	for (; at < inHeard.size(); ++at)
	{
		result.mWrong += inHeard[at].IsSilent() ? 0 : 1;
	}
	return result;
}

Comparison CompareLate(Frames const& inHeard, Frames const& inExport, std::int64_t inPlace)
{
	Comparison result;
	Walk walk(inExport, {inPlace});
	std::size_t at = 0;
	for (; at < inHeard.size() && inHeard[at].IsSilent(); ++at)
	{
	}
	auto const fadesIn = [&](std::size_t inFrom, Walk inWalk)
	{
		for (std::int64_t i = 0; i < kFade; ++i, inWalk.Step())
		{
			float const gain = static_cast<float>(i) / static_cast<float>(kFade);
			if (!(inHeard[inFrom + static_cast<std::size_t>(i)] == inWalk.Get() * gain))
			{
				return false;
			}
		}
		return true;
	};
	while (at < inHeard.size())
	{
		if (inHeard[at] == walk.Get())
		{
			walk.Step();
			++at;
			++result.mCompared;
			continue;
		}
		std::size_t const gap = at;
		while (at + kFade < inHeard.size() && !fadesIn(at, walk))
		{
			++at;
		}
		result.mSilent += static_cast<std::int64_t>(at - gap);
		if (at + kFade >= inHeard.size())
		{
			break;
		}
		for (std::int64_t i = 0; i < kFade; ++i, ++at)
		{
			walk.Step();
			++result.mFaded;
		}
	}
	return result;
}

} // namespace SonaroBenchmarks
