#include "ConvertedContent.h"

#include "Sonaro/PrefetchRange.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

namespace
{

// Room for what a whole block needs beyond the filter, so that it is made in one piece; for long filters, for as much
// as they are long, so that little is moved about.
constexpr std::int64_t kMostRoom = 16384;

std::int64_t ChooseRoom(SampleConverter const& inConverter, std::int64_t inBlock)
{
	std::int64_t const taps = inConverter.GetTaps();
	return taps + std::min(inConverter.CountInput(inBlock) - taps, std::max(kMostRoom, taps));
}

} // namespace

ConvertedContent::ConvertedContent(Settings const& inSettings)
	: Implements({inSettings.mContent}),
	  mSettings(inSettings),
	  mNest(inSettings.mContent),
	  mWindow(inSettings.mContent, inSettings.mFrameRate,
		  ChooseRoom(*inSettings.mConverter, inSettings.mScratch->GetCapacity()), inSettings.mScratch),
	  mMostFrames(inSettings.mConverter->CountOutputs(
		  ChooseRoom(*inSettings.mConverter, inSettings.mScratch->GetCapacity())))
{
	mChannels.reserve(inSettings.mScratch->GetNumChannels());
}

SN::InterfaceRef<SN::IAudioGenerator> ConvertedContent::Clone()
{
	Settings settings = mSettings;
	settings.mScratch = MakeAlike(*mSettings.mScratch);
	settings.mContent = mSettings.mContent->Clone();
	return zorvcore::classref::MakeObject<ConvertedContent>(settings);
}

void ConvertedContent::Preroll(SN::TickTime const& inStartTime, bool inReverse)
{
	mWindow.Forget();
	std::int64_t const frame = inStartTime.ToFrame64(mSettings.mFrameRate);
	SampleConverter::Span const input = mSettings.mConverter->GetInput(frame, 1);
	bool const isReverse = MapDirection(frame, inReverse);
	mSettings.mContent->Preroll(
		SN::TickTime(isReverse ? input.mEnd : input.mFirst, mSettings.mFrameRate), isReverse);
}

void ConvertedContent::Reset()
{
	mWindow.Forget();
	ReadingNode::Reset();
}

void ConvertedContent::AccumulatePrefetchRequests(
	SN::PrefetchRange const& inRange, SN::PrefetchType inType, SN::PrefetchRequestAccumulator& inAccumulator)
{
	SN::FrameRate const& rate = mSettings.mFrameRate;
	std::int64_t const first = inRange.mStart.ToFrame64(rate);
	// Ends between two frames count whole.
	std::int64_t const count = std::max<std::int64_t>((inRange.mEnd - inRange.mStart).ToFrame64(rate), 0) + 1;
	auto const [begin, end] = mSettings.mConverter->GetInput(first, count);
	mSettings.mContent->AccumulatePrefetchRequests(
		{SN::TickTime(begin, rate), SN::TickTime(end, rate)}, inType, inAccumulator);
}

void ConvertedContent::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	std::int64_t const frame = inTime.ToFrame64(mSettings.mFrameRate);
	std::int64_t const frames = ioBuffer.GetUseSize();
	mHeard = dsp::SilenceFlags();
	// In the order in which it is played.
	for (std::int64_t done = 0; done < frames;)
	{
		auto const [first, end] = ChoosePiece(inReverse ? frame : frame + done, frames - done, inReverse);
		Render(first, static_cast<unsigned>(end - first), static_cast<unsigned>(first - frame), inReverse,
			ioBuffer);
		done += end - first;
	}
	for (unsigned long long channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		if (mHeard.Test(channel))
		{
			ioBuffer.NoteChannelWrite(channel, ioBuffer.GetUseSize());
		}
		else
		{
			ioBuffer.MarkChannelSilent(channel);
		}
	}
	if (inReverse)
	{
		ioBuffer.Reverse();
	}
}

SampleConverter::Span ConvertedContent::ChoosePiece(
	std::int64_t inFrame, std::int64_t inCount, bool inReverse) const
{
	std::int64_t const end = inFrame + inCount;
	SampleConverter const& converter = *mSettings.mConverter;
	if (!inReverse)
	{
		return {inFrame, converter.FindTurn(inFrame, std::min(end, inFrame + mMostFrames))};
	}
	std::int64_t first = std::max(inFrame, end - mMostFrames);
	for (std::int64_t turn = converter.FindTurn(first, end); turn < end;
		 turn = converter.FindTurn(first, end))
	{
		first = turn;
	}
	return {first, end};
}

void ConvertedContent::Render(
	std::int64_t inFrame, unsigned inCount, unsigned inTarget, bool inReverse, dsp::AudioBuffer& ioBuffer)
{
	auto const [first, end] = mSettings.mConverter->GetInput(inFrame, inCount);
	bool const isBackwards = MapDirection(inFrame, inReverse);
	if (mNest && !mWindow.Follows(first, end, isBackwards))
	{
		ReadPast(inFrame, inCount, inReverse);
	}
	mWindow.MoveTo(first, end, isBackwards);
	mChannels.clear();
	unsigned long long const channels =
		std::min(ioBuffer.GetNumChannels(), mSettings.mScratch->GetNumChannels());
	for (unsigned channel = 0; channel < channels; ++channel)
	{
		float* const output = ioBuffer.GetChannel(channel) + inTarget;
		if (mWindow.IsSilent(channel))
		{
			std::fill_n(output, inCount, 0.0f);
			continue;
		}
		mChannels.push_back({mWindow.GetChannel(channel), output});
		mHeard.Set(channel);
	}
	if (!mChannels.empty())
	{
		mSettings.mConverter->Convert(inFrame, inCount, mChannels);
	}
}

void ConvertedContent::ReadPast(std::int64_t inFrame, unsigned inCount, bool inReverse)
{
	auto const [first, end] = mSettings.mConverter->GetInput(inFrame, inCount);
	SampleConverter::Span const before =
		mSettings.mConverter->GetInput(inReverse ? inFrame + inCount : inFrame - 1, 1);
	bool const isBackwards = MapDirection(inFrame, inReverse);
	bool const wasUnheard = mNest->IsUnheard();
	mNest->SetUnheard(true);
	if (isBackwards)
	{
		mWindow.MoveTo(std::clamp(before.mFirst, first, end), end, true);
	}
	else
	{
		mWindow.MoveTo(first, std::clamp(before.mEnd, first, end), false);
	}
	mNest->SetUnheard(wasUnheard);
}

} // namespace SonaroHost::Sequence
