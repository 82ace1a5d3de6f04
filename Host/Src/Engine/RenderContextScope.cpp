#include "SonaroHost/Engine/RenderContextScope.h"

#include "SonaroHost/Engine/EngineFactory.h"

namespace SonaroHost
{

RenderContextScope::RenderContextScope(unsigned inBlockFrames, SN::TickTime const& inRangeEnd,
	SN::ImmutableString const& inName, SN::Prefetcher* inPrefetcher)
{
	mContext = EngineFactory().CreateAudioRenderContext({
		.mMaxBlockSize = inBlockFrames,
		.mPrefetchEnabled = inPrefetcher != nullptr,
		.mRangeEnd = inRangeEnd,
		.mControlInterval = kControlInterval,
		.mPrefetcher = inPrefetcher,
		.mRenderName = inName,
		.mRenderQuality = SN::RenderQuality::kMaximum,
	});
}

RenderContextScope::~RenderContextScope()
{
	mContext->Clear();
}

} // namespace SonaroHost
