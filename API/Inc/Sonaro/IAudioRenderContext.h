#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/ICachedAudioGenerator.h"
#include "Sonaro/Types.h"

namespace SN
{

// One render: its block size, control rate, quality and flags, and the services that its nodes share
// while the graph is built and run. Used by one thread at a time; nothing here locks.
//
// Nodes hold the context and its maps hold nodes: whoever made it calls Clear at the end of the
// render, or neither is ever freed.
class SONARO_API IAudioRenderContext : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioRenderContext> kIdentifier{
		0xcbaf8acf8894d411ull, 0xc3a265bb8d52222dull};

	// Begins the building of a nested sequence. Within it the instance index starts at 0 and cached generators
	// of outer levels are not found.
	virtual void PushNestingLevel() = 0;
	// Ends it: one for each push, and none without.
	virtual void PopNestingLevel() = 0;

	// Begins an instance of a nested sequence, so that no two share scratch memory.
	virtual void IncrementInstanceIndex() = 0;
	// Ends it: one for each increment.
	virtual void DecrementInstanceIndex() = 0;

	// Empties the name, the generator maps and all keyed maps.
	virtual void Clear() = 0;

	// True when sources may be read through what was prefetched, without blocking.
	virtual bool IsPrefetchEnabled() SONARO_NONBLOCKING = 0;
	// Handed to the effects on each processing call; false at first, and the host's to mean something by.
	virtual bool GetFilterRenderFlag() SONARO_NONBLOCKING = 0;
	// Takes effect from the next block on.
	virtual void SetFilterRenderFlag(bool inFlag) = 0;
	// True when nodes do not schedule deferred work of a playback start; false at first.
	virtual bool IsImmediateRender() SONARO_NONBLOCKING = 0;
	// Between two runs.
	virtual void SetImmediateRender(bool inImmediate) = 0;
	// True when the latencies of nodes count as 0 and nothing is run ahead, as when scrubbing; false at first.
	virtual bool IsDelayCompensationDisabled() SONARO_NONBLOCKING = 0;
	// Between two runs.
	virtual void SetDelayCompensationDisabled(bool inDisabled) = 0;
	// True unless prefetch is on at nesting depth 0.
	virtual bool IsNotTopLevelPlayback() SONARO_NONBLOCKING = 0;

	// The option that the context was made with. The host's own; the engine only keeps it.
	virtual bool GetContextOption() = 0;
	// Where the range that the context was made with begins, in the time of the sequence. Kept for the host.
	virtual TickTime GetRangeStart() = 0;
	// Where it ends.
	virtual TickTime GetRangeEnd() = 0;
	// The name that the context was made with; empty after Clear.
	virtual ImmutableString GetRenderName() = 0;

	// True when a track renderer is looked up and kept by its timeline object; false at first.
	virtual bool IsTrackCacheEnabled() = 0;
	// Holds for tracks that are made afterwards.
	virtual void SetTrackCacheEnabled(bool inEnabled) = 0;
	// True when all angles of a multicam clip are read ahead, and not only the one that is heard; false at
	// first.
	virtual bool GetMulticamOption() = 0;
	// Holds for clips that are made afterwards.
	virtual void SetMulticamOption(bool inOption) = 0;
	// What the context was made with. Kept for the host.
	virtual RenderQuality GetRenderQuality() = 0;
	// The largest block in samples that a node must be ready for.
	virtual unsigned GetMaxBlockSize() SONARO_NONBLOCKING = 0;
	// How many nested sequences are being built around the place of the next node: 0 at the top.
	virtual unsigned GetNestingDepth() SONARO_NONBLOCKING = 0;

	// The track or send that was entered for a timeline object on this nesting level; empty when none was.
	virtual InterfaceRef<ICachedAudioGenerator> FindCachedGenerator(InterfaceRef<UnknownBase> inKey) = 0;
	// The track renderer that was kept for a timeline object, while the track cache was on; empty when none was.
	virtual InterfaceRef<IAudioGenerator> FindTrackRenderer(InterfaceRef<UnknownBase> inKey) = 0;

	~IAudioRenderContext() override = default;
};

} // namespace SN
