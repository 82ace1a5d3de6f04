#pragma once

#include "Sonaro/GraphFactory.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Support/Pull.h"

namespace SN::Testing
{

// A context for a test, emptied at the end, so that the circle of contexts and nodes is broken.
class ScopedContext
{
public:
	explicit ScopedContext(unsigned inMaxBlockSize = 256, Prefetcher* inPrefetcher = nullptr)
		: mContext(GraphFactory().CreateAudioRenderContext({
			  .mMaxBlockSize = inMaxBlockSize,
			  .mPrefetchEnabled = inPrefetcher != nullptr,
			  .mControlInterval = 16,
			  .mPrefetcher = inPrefetcher,
			  .mRenderName = ImmutableString("test"),
		  }))
	{
	}
	~ScopedContext() { mContext->Clear(); }
	ScopedContext(ScopedContext const&) = delete;
	ScopedContext& operator=(ScopedContext const&) = delete;

	// Goes so many nesting levels down, and stays there.
	void Nest(unsigned inLevels = 1) const
	{
		for (unsigned level = 0; level < inLevels; ++level)
		{
			mContext->PushNestingLevel();
		}
	}
	InterfaceRef<IAudioRenderContext> const& Get() const { return mContext; }
	operator InterfaceRef<IAudioRenderContext> const&() const { return mContext; }
	IAudioRenderContext* operator->() const { return mContext.Get(); }

private:
	InterfaceRef<IAudioRenderContext> mContext;
};

} // namespace SN::Testing
