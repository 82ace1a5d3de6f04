#pragma once

#include "Playback/Feed/WakeUp.h"
#include "PlayedGraph.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace SonaroHost::Playback
{

class ReadNotice;

// Has the media of a graph read ahead in the order of playing, by stretches at playback priority: a short one first, so
// that playing soon begins, then longer ones, until two seconds are there. What the disk was too slow for is asked
// for again.
//
// Counts   Frames are counted in playing order from Begin on.
// Threads  That of the graph, between its blocks: it allocates, and takes the lock of the queue of requests.
class OrderReader
{
public:
	// inWakes: woken whenever something was read.
	OrderReader(PlayedGraph& ioGraph, std::shared_ptr<WakeUp> inWakes);
	~OrderReader();
	OrderReader(OrderReader const&) = delete;
	OrderReader& operator=(OrderReader const&) = delete;

	PlayedGraph& GetGraph() const { return mGraph; }

	// What was asked for before is given up. inRead: so many frames are known to be read.
	void Begin(PlayOrder const& inOrder, std::int64_t inPlace, std::int64_t inRead = 0);
	// Asks for what is due when so many frames are played.
	void Advance(std::int64_t inPlayed);
	// Up to which frame everything was read when Advance was called last.
	std::int64_t CountReady() const { return mReady; }

private:
	// Frames from a place on.
	struct Stretch
	{
		std::int64_t mPlace = 0;
		std::int64_t mFrames = 0;
		SN::InterfaceRef<ReadNotice> mNotice;
	};

	void TakeRead();
	void Ask();
	void Request(Stretch& ioStretch);
	void GiveUp();
	std::int64_t ChooseStretch() const;

	PlayedGraph& mGraph;
	std::shared_ptr<WakeUp> mWakes;
	PlayOrder mOrder;
	// Asked for and not known to be read, the earliest first.
	std::deque<Stretch> mPending;
	std::vector<SN::AudioPrefetch::PrefetchRequest> mRequests;
	std::int64_t mReady = 0;
	std::int64_t mAsked = 0;
	std::int64_t mNextPlace = 0;
};

} // namespace SonaroHost::Playback
