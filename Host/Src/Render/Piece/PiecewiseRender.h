#pragma once

#include "Render/RangeRequest.h"
#include "SonaroHost/Engine/OfflineRender.h"

namespace SonaroHost
{

// What became of a render in pieces.
struct PiecewiseReport
{
	// False where the range is better rendered by one thread; nothing has been rendered then.
	bool mIsRendered = false;
	// False when it was asked to stop.
	bool mIsComplete = false;
	Sequence::GraphReport mGraph;
};

// Renders a range by several threads, the calling one among them. Each thread has a graph of its own and renders pieces of
// the range; sink and taps get what they would get from one thread, in order. Where a graph has to be rendered in one
// run, one thread does so while the others see to the sink and the taps. Throws a HostError.
PiecewiseReport RenderPieces(
	Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange);

} // namespace SonaroHost
