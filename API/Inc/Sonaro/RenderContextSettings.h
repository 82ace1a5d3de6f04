#pragma once

#include "Sonaro/Prefetcher.h"
#include "Sonaro/Types.h"

namespace SN
{

// What a render context is made with; the defaults are those of an offline render.
struct RenderContextSettings
{
	// The largest block, in samples, that a node must be ready for; longer requests lose what lies beyond it.
	// Scratch memory grows with it.
	unsigned mMaxBlockSize = 512;
	// Makes the graph a playback. Sources are read through what was read ahead on the prefetch thread, without
	// blocking, and what was not read ahead is silence; parameters and the mutes of the outermost sequence are
	// live. Without it, parameters stay as they were when the graph was made. It needs mPrefetcher.
	bool mPrefetchEnabled = false;
	// Kept for the host, which asks IAudioRenderContext::GetContextOption.
	bool mContextOption = false;
	// What is to be rendered, in the time of the sequence, from -kTimeMax to kTimeMax. Kept for the host.
	TickTime mRangeStart = kTimeZero;
	TickTime mRangeEnd = kTimeMax;
	// Samples from one sampling of automated parameters to the next; 0 for once in each block.
	unsigned mControlInterval = 64;
	// Kept for the host: the time between two values of a meter.
	TickTime mMeterInterval = kTimeZero;
	// Where a playback loops and whether it runs backwards. The host's own, which outlives the context; may
	// be null without prefetch.
	Prefetcher* mPrefetcher = nullptr;
	// For people, in reports about this render.
	ImmutableString mRenderName = {};
	// Each is handed to IRenderableAudioComponentParam::Init of such processors' parameters; its meaning is
	// the host's.
	bool mFaderParamFlag = false;
	bool mPannerParamFlag = false;
	bool mFilterParamFlag = false;
	bool mSendParamFlag = false;
	// Kept for the host's own nodes: those of the engine convert at a quality of their own.
	RenderQuality mRenderQuality = RenderQuality::kHigh;
};

} // namespace SN
