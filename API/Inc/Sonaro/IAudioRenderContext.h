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

	// Around the building of a nested sequence. Within it the instance index starts at 0 and cached
	// generators of outer levels are not found. Must balance.
	virtual void PushNestingLevel() = 0;
	virtual void PopNestingLevel() = 0;

	// Around each instance of a nested sequence, so that no two share scratch memory.
	virtual void IncrementInstanceIndex() = 0;
	virtual void DecrementInstanceIndex() = 0;

	// Empties the name, the generator maps and all keyed maps.
	virtual void Clear() = 0;

	// True when sources may be read through what was prefetched, without blocking.
	virtual bool IsPrefetchEnabled() = 0;
	// Handed to the effects on each processing call.
	virtual bool GetFilterRenderFlag() = 0;
	virtual void SetFilterRenderFlag(bool inFlag) = 0;
	// True when nodes do not schedule deferred work of a playback start.
	virtual bool IsImmediateRender() = 0;
	virtual void SetImmediateRender(bool inImmediate) = 0;
	virtual bool IsDelayCompensationDisabled() = 0;
	virtual void SetDelayCompensationDisabled(bool inDisabled) = 0;
	// True unless prefetch is on at nesting depth 0.
	virtual bool IsNotTopLevelPlayback() = 0;

	// The host's own; the engine only keeps them.
	virtual bool GetContextOption() = 0;
	virtual TickTime GetRangeStart() = 0;
	virtual TickTime GetRangeEnd() = 0;
	virtual ImmutableString GetRenderName() = 0;

	// True when a track renderer is looked up and kept by its timeline object.
	virtual bool IsTrackCacheEnabled() = 0;
	virtual void SetTrackCacheEnabled(bool inEnabled) = 0;
	virtual bool GetMulticamOption() = 0;
	virtual void SetMulticamOption(bool inOption) = 0;
	virtual RenderQuality GetRenderQuality() = 0;
	// The largest block in samples that a node must be ready for.
	virtual unsigned GetMaxBlockSize() = 0;
	virtual unsigned GetNestingDepth() = 0;

	// What was entered for a timeline object; empty when nothing was.
	virtual InterfaceRef<ICachedAudioGenerator> FindCachedGenerator(InterfaceRef<UnknownBase> inKey) = 0;
	virtual InterfaceRef<IAudioGenerator> FindTrackRenderer(InterfaceRef<UnknownBase> inKey) = 0;

	~IAudioRenderContext() override = default;
};

} // namespace SN
