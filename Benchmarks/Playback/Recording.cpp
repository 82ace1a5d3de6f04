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
	void Step(std::int64_t inFrames)
	{
		for (std::int64_t i = 0; i < inFrames; ++i)
		{
			Step();
		}
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

float GetGainOfStop(std::int64_t inStep)
{
	return static_cast<float>(kFade - inStep) / static_cast<float>(kFade + 1);
}

float GetGainOfMiss(std::int64_t inStep)
{
	return 1.0f - static_cast<float>(std::min(inStep, kFade)) / static_cast<float>(kFade);
}

// Whether the frames from there on are those of the walk, fading out to a stop.
bool FadesOut(Frames const& inHeard, std::size_t inFrom, Walk inWalk)
{
	for (std::int64_t i = 0; i < kFade; ++i, inWalk.Step())
	{
		std::size_t const at = inFrom + static_cast<std::size_t>(i);
		if (at >= inHeard.size() || !(inHeard[at] == inWalk.Get() * GetGainOfStop(i)))
		{
			return false;
		}
	}
	return true;
}

// Whether the frames from there on are those of the walk, fading in after a miss from inMissed on, whose own fade may go
// on meanwhile, until a stop whose fade begins inStop frames later, or earlier below 0, is complete.
bool FadesIn(
	Frames const& inHeard, std::size_t inMissed, std::size_t inFrom, Walk inWalk, std::int64_t inStop)
{
	Frame const last = inMissed > 0 ? inHeard[inMissed - 1] : Frame{};
	auto const faded = static_cast<std::int64_t>(inFrom - inMissed);
	std::int64_t const end = std::min(kFade, inStop + kFade);
	for (std::int64_t i = 0; i < end; ++i, inWalk.Step())
	{
		std::size_t const at = inFrom + static_cast<std::size_t>(i);
		Frame const stopped = inWalk.Get() * (i < inStop ? 1.0f : GetGainOfStop(i - inStop));
		Frame const joined = stopped * (static_cast<float>(i) / static_cast<float>(kFade)) +
							 last * GetGainOfMiss(faded + i + 1);
		if (at >= inHeard.size() || !(inHeard[at] == joined))
		{
			return false;
		}
	}
	return true;
}

// Goes over a miss, after which it goes on within ten seconds; false where there is none.
bool PassMiss(Frames const& inHeard, std::size_t& ioAt, Walk& ioWalk, Comparison& ioResult)
{
	constexpr std::size_t kLongest = 480000;
	std::size_t const end = std::min(inHeard.size(), ioAt + kLongest);
	std::size_t from = ioAt;
	while (from < end && !FadesIn(inHeard, ioAt, from, ioWalk, kFade))
	{
		++from;
	}
	if (from == end)
	{
		return false;
	}
	ioResult.mSilent += static_cast<std::int64_t>(from - ioAt);
	ioResult.mFaded += kFade;
	ioAt = from + kFade;
	ioWalk.Step(kFade);
	return true;
}

// Goes over a miss within the last 2 ms before a stop or within its fade; false where there is none.
bool PassMissAtStop(Frames const& inHeard, std::size_t& ioAt, Walk const& inWalk, Comparison& ioResult)
{
	constexpr std::size_t kLongest = 24000;
	std::size_t const end = std::min(inHeard.size(), ioAt + kLongest);
	for (std::size_t from = ioAt; from < end; ++from)
	{
		for (std::int64_t stop = kFade - 1; stop > -kFade; --stop)
		{
			// So much of the stop's fade was heard before the miss.
			auto const before = static_cast<std::size_t>(std::max<std::int64_t>(-stop, 0));
			if (from < ioAt + before)
			{
				continue;
			}
			Walk walk = inWalk;
			walk.Step(static_cast<std::int64_t>(before));
			if (FadesIn(inHeard, ioAt + before, from, walk, stop))
			{
				auto const faded = static_cast<std::size_t>(std::min(kFade, stop + kFade));
				ioResult.mSilent += static_cast<std::int64_t>(from - ioAt);
				ioResult.mFaded += static_cast<std::int64_t>(faded);
				ioAt = from + faded;
				return true;
			}
		}
	}
	return false;
}

// As long as the frames are those of the walk.
void Compare(Frames const& inHeard, std::size_t& ioAt, Walk& ioWalk, Comparison& ioResult)
{
	for (; ioAt < inHeard.size() && inHeard[ioAt] == ioWalk.Get(); ++ioAt)
	{
		ioWalk.Step();
		++ioResult.mCompared;
	}
}

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
		do
		{
			Compare(inHeard, at, walk, result);
		} while (!FadesOut(inHeard, at, walk) && PassMiss(inHeard, at, walk, result));
		if (!FadesOut(inHeard, at, walk) && PassMissAtStop(inHeard, at, walk, result))
		{
			continue;
		}
		for (std::int64_t i = 0; i < kFade && at < inHeard.size(); ++i, ++at)
		{
			result.mWrong += inHeard[at] == walk.Get() * GetGainOfStop(i) ? 0 : 1;
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
	do
	{
		Compare(inHeard, at, walk, result);
	} while (PassMiss(inHeard, at, walk, result));
	return result;
}

} // namespace SonaroBenchmarks
