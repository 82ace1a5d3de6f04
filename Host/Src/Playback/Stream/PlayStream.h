#pragma once

#include "OrderReader.h"
#include "PlayedGraph.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace SonaroHost::Playback
{

// The frames of a graph in the order in which they are played, from wherever it begins, and how another graph takes its
// place.
//
// Takeover The new graph's media are read ahead from where it could take over. Then both are heard for 10 ms, the new
//          one rising in a straight line, and where both are the same nothing is heard of it.
// Ready    Nothing is rendered that was not read before, so that whoever waits for CountReady misses nothing.
// Threads  One. Render neither allocates nor locks; the rest is for between blocks.
class PlayStream
{
public:
	// A graph outlives this, or is let go of once Has says so. Blocks are those of the first one.
	PlayStream(PlayedGraph& ioGraph, std::shared_ptr<WakeUp> inWakes);

	PlayedGraph& GetGraph() const { return mCurrent->GetGraph(); }
	PlayOrder const& GetOrder() const { return mOrder; }
	// Between the frame that was rendered last and the next one.
	std::int64_t GetPlace() const { return mPlace; }

	// A graph that was on its way is the only one from here on.
	void Begin(PlayOrder const& inOrder, std::int64_t inPlace);
	// Another order from here on, while it is played: what both have in common is there already.
	void Reorder(PlayOrder const& inOrder);
	// Has read ahead what is due, and lets a graph begin to take over when what it needs was read.
	void Advance();
	// How many frames can be rendered.
	std::int64_t CountReady() const;
	// The next frames, UseSize of them, at most a block.
	void Render(dsp::AudioBuffer& ioBuffer) SONARO_NONBLOCKING;

	// Keeps the place that Return goes back to.
	void Mark();
	// Back to the mark: what comes after it is read again before it is rendered. False, and nothing happens, where a graph
	// has begun or ended taking over since then.
	bool Return();

	// Of the programme's rate and layout, and with blocks that are as long. It takes over as soon as possible, in
	// place of one that waits already; inIsHeard: otherwise at once.
	void TakeOver(PlayedGraph& ioGraph, bool inIsHeard);
	// A graph that is on its way takes over now.
	void FinishTakeover();
	// Whether that graph may still be asked for something.
	bool Has(PlayedGraph const& inGraph) const;

private:
	bool IsFading() const { return mFaded < mFadeFrames; }
	void RenderRun(std::int64_t inPlace, dsp::AudioBuffer& ioBuffer);
	// Mixes what the next graph has for it.
	void FadeOver(std::int64_t inPlace, dsp::AudioBuffer& ioBuffer);
	void EndTakeover();

	std::shared_ptr<WakeUp> mWakes;
	std::unique_ptr<OrderReader> mCurrent;
	std::unique_ptr<OrderReader> mNext;
	PlayOrder mOrder;
	std::int64_t mPlace = 0;
	// Frames since either reader began.
	std::int64_t mPlayed = 0;
	std::int64_t mNextPlayed = 0;
	// At the mark: the place, mNextPlayed, and the reader; null during a takeover.
	std::int64_t mMarkedPlace = 0;
	std::int64_t mMarkedNextPlayed = 0;
	OrderReader const* mMarkedReader = nullptr;
	std::int64_t mFadeFrames;
	// How many frames of the crossfade were rendered; all outside of one.
	std::int64_t mFaded;
	// Left behind, since blocks may not let go of anything.
	std::unique_ptr<OrderReader> mLast;
	dsp::AudioBuffer mOther;
};

} // namespace SonaroHost::Playback
