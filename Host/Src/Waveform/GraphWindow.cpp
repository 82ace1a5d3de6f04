#include "GraphWindow.h"

#include <algorithm>

namespace SonaroHost
{

GraphWindow::GraphWindow(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph,
	SN::FrameRate const& inFrameRate, unsigned inChannels, unsigned inBlockFrames, Range const& inBounds)
	: mGraph(inGraph),
	  mFrameRate(inFrameRate),
	  mBounds(inBounds),
	  mBlock(inChannels, inBlockFrames)
{
}

void GraphWindow::MoveTo(std::int64_t inFrame)
{
	// Blocks lie on a grid, so that a walk backwards pulls each once.
	std::int64_t const blockFrames = mBlock.GetCapacity();
	std::int64_t const offset = (inFrame % blockFrames + blockFrames) % blockFrames;
	std::int64_t const gridFrame = inFrame - offset;
	Range const range{std::max(gridFrame, mBounds.mFirst), std::min(gridFrame + blockFrames, mBounds.mEnd)};
	SN::TickTime const time(range.mFirst, mFrameRate);
	if (!mIsStarted || range.mFirst != mRange.mEnd)
	{
		mGraph->Reset();
		mGraph->Preroll(time, false);
		mIsStarted = true;
	}
	// Nothing is held if the pull fails.
	mRange = {};
	mBlock.SetUseSize(static_cast<unsigned>(range.mEnd - range.mFirst));
	mGraph->GetAudioData(time, mBlock, false);
	mRange = range;
}

float const* GraphWindow::GetSamples(unsigned inChannel, std::int64_t inFrame) const
{
	return mBlock.IsChannelSilent(inChannel) ? nullptr
											 : mBlock.GetChannel(inChannel) + (inFrame - mRange.mFirst);
}

} // namespace SonaroHost
