#pragma once

#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Prefetcher.h"
#include "Sonaro/Types.h"

namespace SonaroHost
{

// Samples between two updates of automated parameters.
inline constexpr unsigned kControlInterval = 64;

// A render context for one offline render, whose sources read as the render needs them, or through what was
// read ahead. It clears the context at the end, without which context and nodes would hold each other for ever.
class RenderContextScope
{
public:
	// inRangeEnd: where the render ends on its time line. inPrefetcher: the playback whose sources are
	// read ahead, which outlives this object; null for none.
	RenderContextScope(unsigned inBlockFrames, SN::TickTime const& inRangeEnd,
		SN::ImmutableString const& inName, SN::Prefetcher* inPrefetcher = nullptr);
	~RenderContextScope();
	RenderContextScope(RenderContextScope const&) = delete;
	RenderContextScope& operator=(RenderContextScope const&) = delete;

	SN::InterfaceRef<SN::IAudioRenderContext> const& Get() const { return mContext; }

private:
	SN::InterfaceRef<SN::IAudioRenderContext> mContext;
};

} // namespace SonaroHost
