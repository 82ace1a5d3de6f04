#include "OrderReader.h"

#include "Sonaro/IAudioPrefetchNotify.h"
#include "zorvcore/utility/HighPrecisionTime.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <utility>

namespace SonaroHost::Playback
{

// Hears the end of one batch of requests.
//
// Threads  Any.
class ReadNotice final : public SN::Implements<ReadNotice, SN::AudioPrefetch::IAudioPrefetchNotify>
{
public:
	static constexpr SN::Identifier<ReadNotice> kIdentifier{0x6d1e04b9a7c35f82ull, 0xf25b8093ce146da7ull};

	enum class State
	{
		kWaiting,
		kRead,
		kGivenUp,
	};

	explicit ReadNotice(std::shared_ptr<WakeUp> inWakes)
		: mWakes(std::move(inWakes))
	{
	}

	void Complete(int inResult) override
	{
		mState.store(inResult == SN::kSuccess ? State::kRead : State::kGivenUp, std::memory_order_release);
		mWakes->Wake();
	}
	State GetState() const { return mState.load(std::memory_order_acquire); }

private:
	std::shared_ptr<WakeUp> mWakes;
	std::atomic<State> mState{State::kWaiting};
};

namespace
{

// Of the first stretch, and the longest; the time that is kept read ahead.
constexpr double kFirstSeconds = 0.1;
constexpr double kLongestSeconds = 1.0;
constexpr double kAheadSeconds = 2.0;

} // namespace

OrderReader::OrderReader(PlayedGraph& ioGraph, std::shared_ptr<WakeUp> inWakes)
	: mGraph(ioGraph),
	  mWakes(std::move(inWakes))
{
}

OrderReader::~OrderReader()
{
	try
	{
		GiveUp();
	}
	catch (std::exception const&)
	{
		// The engine's module has stopped and given everything up itself, or there is no memory for the mark;
		// then something is read for nothing.
	}
}

void OrderReader::Begin(PlayOrder const& inOrder, std::int64_t inPlace, std::int64_t inRead)
{
	GiveUp();
	mOrder = inOrder;
	mNextPlace = inOrder.Move(inPlace, inRead);
	mReady = inRead;
	mAsked = inRead;
	mGraph.SetOrder(inOrder);
	Advance(0);
}

void OrderReader::Advance(std::int64_t inPlayed)
{
	TakeRead();
	double const rate = mGraph.GetProgramme().mSampleRate;
	while (mAsked - inPlayed < static_cast<std::int64_t>(kAheadSeconds * rate))
	{
		Ask();
	}
}

void OrderReader::TakeRead()
{
	while (!mPending.empty())
	{
		Stretch& stretch = mPending.front();
		switch (stretch.mNotice->GetState())
		{
		case ReadNotice::State::kWaiting:
			return;
		case ReadNotice::State::kGivenUp:
			Request(stretch);
			return;
		case ReadNotice::State::kRead:
			mReady += stretch.mFrames;
			mPending.pop_front();
			break;
		}
	}
}

void OrderReader::Ask()
{
	// Stands among what is given up in the end before the engine has it.
	mPending.push_back({mNextPlace, ChooseStretch(), {}});
	Request(mPending.back());
	mAsked += mPending.back().mFrames;
	mNextPlace = mOrder.Move(mNextPlace, mPending.back().mFrames);
}

std::int64_t OrderReader::ChooseStretch() const
{
	auto const rate = static_cast<double>(mGraph.GetProgramme().mSampleRate);
	auto const first = std::max<std::int64_t>(static_cast<std::int64_t>(kFirstSeconds * rate), 1);
	auto const longest = static_cast<std::int64_t>(kLongestSeconds * rate);
	return std::clamp(mAsked * 3, first, std::max(first, longest));
}

void OrderReader::Request(Stretch& ioStretch)
{
	mRequests.clear();
	// What comes again in a short loop has been asked for with its first round.
	std::int64_t const once = mOrder.CountRun(ioStretch.mPlace, ioStretch.mFrames) + mOrder.GetLoopLength();
	std::int64_t left = std::min(ioStretch.mFrames, once);
	for (std::int64_t place = ioStretch.mPlace; left > 0;)
	{
		std::int64_t const run = mGraph.CountRun(mOrder, place, left);
		mGraph.AddRequests(mOrder, place, run, mRequests);
		place = mOrder.Move(place, run);
		left -= run;
	}
	ioStretch.mNotice = zorvcore::classref::MakeObject<ReadNotice>(mWakes);
	SN::AudioPrefetch::PrefetchAudio(SN::AudioPrefetch::PlaybackPriority, mRequests,
		zorvcore::utility::HighPrecisionTime::GetCurrentTimeStamp(), ioStretch.mNotice);
}

void OrderReader::GiveUp()
{
	if (!mPending.empty())
	{
		mPending.clear();
		SN::AudioPrefetch::CancelAllPendingPrefetchRequests(SN::AudioPrefetch::PlaybackPriority);
	}
}

} // namespace SonaroHost::Playback
