#include "PlayStream.h"

#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Playback
{

namespace
{

constexpr int kTakeoversPerSecond = 100;

// To the other one in a straight line, inStart being the first step of inSteps. Where both are the same, it is so, too.
void FadeChannel(
	float* ioSamples, float const* inOther, std::int64_t inStart, std::int64_t inSteps, unsigned inFrames)
{
	for (unsigned i = 0; i < inFrames; ++i)
	{
		float const share = static_cast<float>(inStart + i) / static_cast<float>(inSteps);
		ioSamples[i] += (inOther[i] - ioSamples[i]) * share;
	}
}

void FillSilence(dsp::AudioBuffer& ioBuffer)
{
	for (unsigned long long channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		if (ioBuffer.IsChannelSilent(channel))
		{
			std::fill_n(ioBuffer.GetChannel(channel), ioBuffer.GetUseSize(), 0.0f);
			ioBuffer.NoteChannelWrite(channel, ioBuffer.GetUseSize());
		}
	}
}

} // namespace

PlayStream::PlayStream(PlayedGraph& ioGraph, std::shared_ptr<WakeUp> inWakes)
	: mWakes(std::move(inWakes)),
	  mCurrent(std::make_unique<OrderReader>(ioGraph, mWakes)),
	  mFadeFrames(std::max(ioGraph.GetProgramme().mSampleRate / kTakeoversPerSecond, 1)),
	  mFaded(mFadeFrames),
	  mOther(ioGraph.GetProgramme().GetLayout().size(), ioGraph.GetBlockFrames())
{
}

void PlayStream::Begin(PlayOrder const& inOrder, std::int64_t inPlace)
{
	FinishTakeover();
	mOrder = inOrder;
	mPlace = inPlace;
	mPlayed = 0;
	mCurrent->Begin(inOrder, inPlace);
}

void PlayStream::Reorder(PlayOrder const& inOrder)
{
	FinishTakeover();
	std::int64_t const ready = mCurrent->CountReady() - mPlayed;
	std::int64_t const common = inOrder.CountRun(mPlace, mOrder.CountRun(mPlace, ready));
	mOrder = inOrder;
	mPlayed = 0;
	mCurrent->Begin(inOrder, mPlace, std::max<std::int64_t>(common - GetGraph().GetAheadFrames(), 0));
}

void PlayStream::Advance()
{
	mLast.reset();
	mCurrent->Advance(mPlayed);
	if (mNext)
	{
		mNext->Advance(mNextPlayed);
		std::int64_t const needed = mNextPlayed + mFadeFrames + mOther.GetCapacity();
		mFaded = !IsFading() && mNext->CountReady() >= needed ? 0 : mFaded;
	}
}

std::int64_t PlayStream::CountReady() const
{
	std::int64_t const ready = mCurrent->CountReady() - mPlayed;
	return IsFading() ? std::min(ready, mNext->CountReady() - mNextPlayed) : ready;
}

void PlayStream::Render(dsp::AudioBuffer& ioBuffer)
{
	std::int64_t const frames = ioBuffer.GetUseSize();
	dsp::AudioSubBuffer window;
	window.Init(ioBuffer.GetNumChannels());
	for (std::int64_t done = 0; done < frames;)
	{
		std::int64_t const most = IsFading() ? std::min(frames - done, mFadeFrames - mFaded) : frames - done;
		std::int64_t const run = GetGraph().CountRun(mOrder, mPlace, most);
		window.Assign(ioBuffer, static_cast<unsigned>(done));
		window.SetUseSize(static_cast<unsigned>(run));
		RenderRun(mPlace, window);
		mPlace = mOrder.Move(mPlace, run);
		done += run;
	}
}

void PlayStream::Mark()
{
	mMarkedPlace = mPlace;
	mMarkedNextPlayed = mNextPlayed;
	mMarkedReader = IsFading() ? nullptr : mCurrent.get();
}

bool PlayStream::Return()
{
	if (mMarkedReader != mCurrent.get() || IsFading())
	{
		return false;
	}
	mPlace = mMarkedPlace;
	mPlayed = 0;
	mNextPlayed = mMarkedNextPlayed;
	mCurrent->Begin(mOrder, mPlace);
	return true;
}

void PlayStream::RenderRun(std::int64_t inPlace, dsp::AudioBuffer& ioBuffer)
{
	GetGraph().Render(mOrder, inPlace, ioBuffer);
	mPlayed += ioBuffer.GetUseSize();
	mNextPlayed += ioBuffer.GetUseSize();
	if (IsFading())
	{
		FadeOver(inPlace, ioBuffer);
		mFaded += ioBuffer.GetUseSize();
		if (!IsFading())
		{
			EndTakeover();
		}
	}
}

void PlayStream::FadeOver(std::int64_t inPlace, dsp::AudioBuffer& ioBuffer)
{
	mOther.SetUseSize(ioBuffer.GetUseSize());
	// The programmes may end at different places.
	dsp::AudioSubBuffer window;
	window.Init(mOther.GetNumChannels());
	PlayedGraph& next = mNext->GetGraph();
	for (std::int64_t done = 0; done < ioBuffer.GetUseSize();)
	{
		std::int64_t const place = mOrder.MoveStraight(inPlace, done);
		std::int64_t const run = next.CountRun(mOrder, place, ioBuffer.GetUseSize() - done);
		window.Assign(mOther, static_cast<unsigned>(done));
		window.SetUseSize(static_cast<unsigned>(run));
		next.Render(mOrder, place, window);
		done += run;
	}
	FillSilence(mOther);
	FillSilence(ioBuffer);
	for (unsigned long long channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		FadeChannel(ioBuffer.GetChannel(channel), mOther.GetChannel(channel), mFaded, mFadeFrames,
			ioBuffer.GetUseSize());
	}
}

void PlayStream::FinishTakeover()
{
	if (mNext)
	{
		EndTakeover();
	}
	mLast.reset();
}

void PlayStream::EndTakeover()
{
	mLast = std::exchange(mCurrent, std::move(mNext));
	mPlayed = mNextPlayed;
	mFaded = mFadeFrames;
}

void PlayStream::TakeOver(PlayedGraph& ioGraph, bool inIsHeard)
{
	if (IsFading())
	{
		FinishTakeover();
	}
	mNext = std::make_unique<OrderReader>(ioGraph, mWakes);
	mNextPlayed = 0;
	if (inIsHeard)
	{
		mNext->Begin(mOrder, mPlace);
		return;
	}
	FinishTakeover();
}

bool PlayStream::Has(PlayedGraph const& inGraph) const
{
	auto const reads = [&](std::unique_ptr<OrderReader> const& inReader)
	{ return inReader && &inReader->GetGraph() == &inGraph; };
	return reads(mCurrent) || reads(mNext) || reads(mLast);
}

} // namespace SonaroHost::Playback
