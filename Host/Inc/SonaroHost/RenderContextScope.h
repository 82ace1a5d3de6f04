#pragma once

#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Types.h"

#include <string>

namespace SonaroHost
{

// Throws a HostError when inResult, what the engine answered to inWhat ("a clip", "a context"), is a
// failure.
void CheckEngineResult(int inResult, std::string const& inWhat);

// A render context for one offline render: without prefetch, its sources read as the render needs them.
// It clears the context at the end, without which context and nodes would hold each other for ever.
class RenderContextScope
{
public:
	// inRangeEnd: where the render ends on its time line.
	RenderContextScope(
		unsigned inBlockFrames, SN::TickTime const& inRangeEnd, SN::ImmutableString const& inName);
	~RenderContextScope();
	RenderContextScope(RenderContextScope const&) = delete;
	RenderContextScope& operator=(RenderContextScope const&) = delete;

	SN::InterfaceRef<SN::IAudioRenderContext> const& Get() const { return mContext; }

private:
	SN::InterfaceRef<SN::IAudioRenderContext> mContext;
};

} // namespace SonaroHost
