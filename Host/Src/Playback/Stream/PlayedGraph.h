#pragma once

#include "PlayOrder.h"
#include "Sonaro/AudioPrefetch.h"
#include "Sonaro/Prefetcher.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Media/GraphMedia.h"
#include "SonaroHost/Render/Programme.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace SonaroHost::Playback
{

// The graph of a programme for a playback, with what belongs to it. Its media are read ahead: what nobody has asked
// for is silence.
//
// Threads  Made and destroyed on any; between that it belongs to one. Render neither allocates nor locks.
class PlayedGraph
{
public:
	// Ready to render blocks of up to inBlockFrames. Throws a HostError as MakeGraph does.
	PlayedGraph(Programme const& inProgramme, unsigned inBlockFrames);
	~PlayedGraph();
	PlayedGraph(PlayedGraph const&) = delete;
	PlayedGraph& operator=(PlayedGraph const&) = delete;

	Programme const& GetProgramme() const { return mProgramme; }
	unsigned GetBlockFrames() const { return mBlockFrames; }

	// Before it is asked for anything in that order.
	void SetOrder(PlayOrder const& inOrder);
	// A run of the order from a place on, of the buffer's UseSize: without a jump, within the programme or beyond it.
	void Render(
		PlayOrder const& inOrder, std::int64_t inPlace, dsp::AudioBuffer& ioBuffer) SONARO_NONBLOCKING;
	// Adds what such a run depends on.
	void AddRequests(PlayOrder const& inOrder, std::int64_t inPlace, std::int64_t inFrames,
		std::vector<SN::AudioPrefetch::PrefetchRequest>& ioRequests);
	// How many frames from a place on, at most inFrames, lie all within the programme or all beyond it, without a jump.
	std::int64_t CountRun(PlayOrder const& inOrder, std::int64_t inPlace, std::int64_t inFrames) const;

	// How far beyond a run what it depends on goes, at most.
	std::int64_t GetAheadFrames() const { return mAheadFrames; }

	// Throws a HostError when media have stopped being decoded.
	void Check() const { CheckMedia(mProgramme, GetMedia()); }
	// What its effects report goes on being written while it is played; any thread reads it.
	Sequence::GraphReport const& GetReport() const { return mGraph.GetReport(); }
	// How many frames of media were silent since they were not there when they were played.
	std::uint64_t CountUnreadFrames() const { return GetMedia().CountUnreadFrames(); }

private:
	GraphMedia const& GetMedia() const { return mMedia ? *mMedia : *mProgramme.mMedia; }
	bool IsWithin(PlayOrder const& inOrder, std::int64_t inPlace) const;
	// Of a frame of the programme.
	SN::TickTime ToTime(std::int64_t inFrame) const
	{
		return {mProgramme.mFirstFrame + inFrame, mProgramme.GetFrameRate()};
	}

	Programme mProgramme;
	unsigned mBlockFrames;
	// Of this graph alone, where the programme offers that.
	std::unique_ptr<GraphMedia> mMedia;
	SN::Prefetcher mPrefetcher;
	RenderContextScope mContext;
	Sequence::SequenceGraph mGraph;
	std::int64_t mAheadFrames = 0;
};

} // namespace SonaroHost::Playback
