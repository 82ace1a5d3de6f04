#include "SpeedStream.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace SonaroHost::Playback
{

namespace
{

constexpr double kFastest = 4.0;
constexpr double kSlowest = 0.01;

} // namespace

PlaySpeed PlaySpeed::Make(double inSpeed)
{
	double const magnitude = std::abs(inSpeed);
	// Written so that what is not a number fails it.
	if (!(magnitude >= kSlowest && magnitude <= kFastest))
	{
		Refuse("a speed of " + FormatNumber(inSpeed) +
			   " is out of range; use 0.01 to 4, or -0.01 to -4 backwards");
	}
	PlaySpeed speed{inSpeed, Ratio::FromExactDouble(magnitude), nullptr};
	if (speed.mStep != Ratio(1))
	{
		speed.mConverter = std::make_shared<RateConverter const>(speed.mStep, RateConverter::Position{});
	}
	return speed;
}

SpeedStream::SpeedStream(PlayStream& ioStream, unsigned inChannels, unsigned inBlockFrames)
	: mStream(ioStream),
	  mBlockFrames(inBlockFrames),
	  mScratch(inChannels, inBlockFrames)
{
	mChannels.resize(inChannels);
}

void SpeedStream::Begin(PlayOrder const& inOrder, std::int64_t inPlace, PlaySpeed const& inSpeed)
{
	mSpeed = inSpeed;
	mBegin = inPlace;
	mPassedBefore = 0;
	mOutputs = 0;
	mFirst = 0;
	if (mSpeed.mConverter)
	{
		mFirst = mSpeed.mConverter->GetInput(0, 1).mFirst;
		mCapacity = mSpeed.mConverter->CountInput(mBlockFrames) + mBlockFrames;
		mWindow.assign(static_cast<std::size_t>(mCapacity) * mChannels.size(), 0.0f);
	}
	mEnd = mFirst;
	mStream.Begin(inOrder, inOrder.MoveStraight(inPlace, mFirst));
}

void SpeedStream::SetLoop(std::int64_t inFirst, std::int64_t inEnd)
{
	mBegin = GetPlace();
	mPassedBefore = CountPassed();
	mStream.Reorder(PlayOrder::Make(mSpeed.IsReverse(), inFirst, inEnd, mStream.GetPlace()));
}

bool SpeedStream::IsReady(std::int64_t inFrames) const
{
	std::int64_t const needed =
		mSpeed.mConverter ? mSpeed.mConverter->GetInput(mOutputs, inFrames).mEnd - mEnd : inFrames;
	return mStream.CountReady() >= needed;
}

void SpeedStream::Render(dsp::AudioBuffer& ioBuffer)
{
	std::int64_t const frames = ioBuffer.GetUseSize();
	mStream.Mark();
	mEndBefore = mEnd;
	mOutputsBefore = mOutputs;
	if (!mSpeed.mConverter)
	{
		mStream.Render(ioBuffer);
		mOutputs += frames;
		return;
	}
	auto const [first, end] = mSpeed.mConverter->GetInput(mOutputs, frames);
	Keep(first);
	ReadUpTo(end);
	for (std::size_t channel = 0; channel < mChannels.size(); ++channel)
	{
		float const* const input = mWindow.data() + static_cast<std::int64_t>(channel) * mCapacity;
		mChannels[channel] = {input + (first - mFirst), ioBuffer.GetChannel(channel)};
	}
	mSpeed.mConverter->Convert(mOutputs, ioBuffer.GetUseSize(), mChannels);
	ioBuffer.NoteBufferWrite(0, ioBuffer.GetUseSize());
	mOutputs += frames;
}

bool SpeedStream::TakeBackLast()
{
	if (!mStream.Return())
	{
		return false;
	}
	mEnd = mEndBefore;
	mOutputs = mOutputsBefore;
	return true;
}

void SpeedStream::Keep(std::int64_t inFirst)
{
	std::int64_t const dropped = std::clamp<std::int64_t>(inFirst - mFirst, 0, mEnd - mFirst);
	for (std::size_t channel = 0; dropped > 0 && channel < mChannels.size(); ++channel)
	{
		float* const samples = mWindow.data() + static_cast<std::int64_t>(channel) * mCapacity;
		std::copy(samples + dropped, samples + (mEnd - mFirst), samples);
	}
	mFirst += dropped;
}

void SpeedStream::ReadUpTo(std::int64_t inEnd)
{
	while (mEnd < inEnd)
	{
		mScratch.SetUseSize(static_cast<unsigned>(std::min<std::int64_t>(inEnd - mEnd, mBlockFrames)));
		mStream.Render(mScratch);
		Append(mScratch);
	}
}

void SpeedStream::Append(dsp::AudioBuffer const& inBlock)
{
	std::int64_t const count = inBlock.GetUseSize();
	for (std::size_t channel = 0; channel < mChannels.size(); ++channel)
	{
		float* const place =
			mWindow.data() + static_cast<std::int64_t>(channel) * mCapacity + (mEnd - mFirst);
		if (inBlock.IsChannelSilent(channel))
		{
			std::fill_n(place, count, 0.0f);
		}
		else
		{
			std::copy_n(inBlock.GetChannel(channel), count, place);
		}
	}
	mEnd += count;
}

std::int64_t SpeedStream::GetPlace() const
{
	return mStream.GetOrder().Move(mBegin, CountPassed() - mPassedBefore);
}

std::int64_t SpeedStream::CountOutputs(std::int64_t inFrames) const
{
	return -(-(Ratio(inFrames) / mSpeed.mStep)).Floor();
}

std::int64_t SpeedStream::CountLeft() const
{
	PlayOrder const& order = mStream.GetOrder();
	if (order.IsLoop())
	{
		return std::numeric_limits<std::int64_t>::max();
	}
	std::int64_t const end = mStream.GetGraph().GetProgramme().mFrames;
	std::int64_t const frames = order.mIsReverse ? mBegin : end - mBegin;
	return std::max<std::int64_t>(CountOutputs(mPassedBefore + frames) - mOutputs, 0);
}

std::int64_t SpeedStream::CountToJump() const
{
	PlayOrder const& order = mStream.GetOrder();
	if (!order.IsLoop())
	{
		return std::numeric_limits<std::int64_t>::max();
	}
	std::int64_t const left = order.CountRun(GetPlace(), std::numeric_limits<std::int64_t>::max());
	return std::max<std::int64_t>(CountOutputs(CountPassed() + left) - mOutputs, 1);
}

} // namespace SonaroHost::Playback
