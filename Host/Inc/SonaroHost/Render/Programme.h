#pragma once

#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Prefetcher.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/GraphMedia.h"
#include "SonaroHost/Sequence/Description.h"
#include "SonaroHost/Sequence/SequenceGraph.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

namespace SonaroHost
{

namespace Farm
{
class PieceSet;
}

// What a render job renders, whether it was made of sound files or of a timeline: a stretch of a sequence.
struct Programme
{
	// mSampleRate as the engine's type.
	SN::FrameRate GetFrameRate() const { return SN::FrameRate::FromSamplesPerSecond(mSampleRate); }
	// The layout of what comes out.
	SN::AudioChannelLayout const& GetLayout() const { return mDescription->mLayout; }

	// What is rendered. Never null.
	std::shared_ptr<Sequence::Description const> mDescription;
	// Frames a second of the render, in Hz.
	int mSampleRate = 48000;
	// The frame of the sequence that is the programme's first.
	std::int64_t mFirstFrame = 0;
	// How many frames it has.
	std::int64_t mFrames = 0;
	// The file that the description was made from, which errors in it name; empty where the request says it all.
	std::filesystem::path mFile;
	// Never null: without files, an empty FileMedia. Asked on the thread that renders.
	std::shared_ptr<GraphMedia const> mMedia;
	// Gives media of their own to the graph that is made next; graphs are made one at a time. Without it, one graph at a time
	// can be rendered, and it is the media above that are asked.
	std::function<std::unique_ptr<GraphMedia>()> mOpenForGraph;
	// Whether a render of it fails when there are any.
	bool mRefusesDamage = false;
	// A pass in which the latency of an effect grows goes on to its end, unheard, to find the largest one.
	bool mSearchesLatency = false;
	// Pieces of it that were rendered before and are read instead; null where it is rendered.
	std::shared_ptr<Farm::PieceSet const> mPieces = nullptr;
};

// The engine's graph of a programme; inContext, inPrefetcher and inView as SequenceGraph wants them. Throws a HostError
// for a sequence that cannot be rendered, such as one that is nested too deep or has a clip that ends beyond 50 hours:
// of kind kInput, naming the programme's file and the place in it, where there is such a file.
Sequence::SequenceGraph MakeGraph(Programme const& inProgramme,
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, Sequence::GraphView const& inView = {},
	SN::Prefetcher const* inPrefetcher = nullptr);

// How many frames to render at a time: as many as wanted, unless the channels of very many tracks would keep more
// than 8 MiB of such blocks. Besides the memory, smaller ones then save time, since they fit into the caches of
// processors.
unsigned ChooseBlock(Programme const& inProgramme, unsigned inWanted);

// Throws a HostError when one of the media, the programme's own or those of one of its graphs, stopped being decoded or,
// where the programme refuses it, was found damaged.
void CheckMedia(Programme const& inProgramme, GraphMedia const& inMedia);

// What an error says of an effect of a graph that has a fault: name, place and time, and what it hears where that is to
// blame, for which media are read. Until then nothing else may be opened for a graph of the programme. inFirstFrame: as
// below.
HostError::Parts DescribeFault(
	Programme const& inProgramme, Sequence::EffectHealth const& inEffect, std::int64_t inFirstFrame);

// Throws a HostError when an effect of a graph has a fault, which names the first one in time, and what it hears where that
// is to blame. inFirstFrame: where the block that was rendered last begins in the programme.
void CheckEffects(
	Programme const& inProgramme, Sequence::GraphReport const& inReport, std::int64_t inFirstFrame);

} // namespace SonaroHost
