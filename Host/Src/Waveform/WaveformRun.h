#pragma once

#include "GraphWindow.h"
#include "Sonaro/IAudioWaveformBuffer.h"

#include <cstdint>

namespace VX
{
class ITimeTransform;
}

namespace zorvcore::threads
{
class Gate;
}

namespace SonaroHost
{

// A waveform to be computed. All of it outlives the computation.
struct WaveformPlan
{
	// Frames of the range; with a transform, of its time line.
	GraphWindow::Range mFrames;
	std::int64_t mInterval = 0;
	SN::FrameRate mFrameRate;
	unsigned mChannels = 0;
	// Null for none.
	VX::ITimeTransform* mTransform = nullptr;
	zorvcore::threads::Gate* mGate = nullptr;
};

// Fills the buffer and completes it; false when it was given up.
bool ComputeWaveform(GraphWindow& ioWindow, SN::IAudioWaveformBuffer& ioBuffer, WaveformPlan const& inPlan);

} // namespace SonaroHost
