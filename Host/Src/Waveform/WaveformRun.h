#pragma once

#include "GraphWindow.h"
#include "Sonaro/IAudioWaveformBuffer.h"
#include "SonaroHost/Waveform/PeakColumn.h"

#include <cstdint>
#include <vector>

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

// One waveform while it is computed.
class WaveformRun
{
public:
	// All of it outlives this object.
	struct Plan
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

	WaveformRun(GraphWindow& ioWindow, SN::IAudioWaveformBuffer& ioBuffer, Plan const& inPlan);

	// Fills the buffer and completes it; false when it was given up.
	bool Compute();

private:
	// Waits at the gate; false when the waveform is not wanted any more.
	bool MayGoOn() const;
	bool ComputeStraight();
	bool ComputeTransformed();
	// Adds all frames to a column of each channel, those outside of the bounds as silence.
	bool AddFrames(GraphWindow::Range const& inFrames, std::vector<PeakColumn>& ioColumns);
	// The frames of the graph that the time from one frame of the range to another passes over.
	GraphWindow::Range FindPassed(std::int64_t inFrom, std::int64_t inTo) const;
	void WriteColumns();

	GraphWindow& mWindow;
	SN::IAudioWaveformBuffer& mBuffer;
	Plan mPlan;
	// The column in the making of each channel.
	std::vector<PeakColumn> mColumns;
	std::uint64_t mNumWritten = 0;
};

} // namespace SonaroHost
