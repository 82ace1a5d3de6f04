#include "SonaroHost/Waveform/PeakWaveformGenerator.h"

#include "GraphWindow.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "SonaroHost/Base/HostError.h"
#include "Vexilon/ITimeTransform.h"
#include "WaveformRun.h"
#include "zorvcore/ResultCodes.h"

#include <algorithm>
#include <limits>

namespace SonaroHost
{

namespace
{

// Three floats each, of 64 channels at most: far below what a size can count.
constexpr std::int64_t kMostColumns = std::numeric_limits<std::int32_t>::max();

} // namespace

PeakWaveformGenerator::PeakWaveformGenerator(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph,
	SN::TickTime const& inStart, SN::TickTime const& inEnd, unsigned inBlockFrames)
	: mGraph(inGraph),
	  mStart(inStart),
	  mEnd(std::max(inStart, inEnd)),
	  mBlockFrames(std::max(inBlockFrames, 1u))
{
	SN::InterfaceRef<SN::IAudioGeneratorPrivate> const description(inGraph);
	if (!description || !description->GetGeneratorFrameRate().IsCountable())
	{
		throw HostError(
			HostError::Kind::kEngine, "a waveform needs a graph that states its channels and sample rate");
	}
	mFrameRate = description->GetGeneratorFrameRate();
	mChannels = description->GetNumChannels();
}

int PeakWaveformGenerator::GetWaveformInfo(
	SN::TickTime& outStart, SN::TickTime& outEnd, unsigned long long& outChannels)
{
	outStart = mStart;
	outEnd = mEnd;
	outChannels = mChannels;
	return SN::kSuccess;
}

int PeakWaveformGenerator::GenerateWaveform(SN::TickTime const& inStartTime, SN::TickTime const& inEndTime,
	unsigned long long inSampleInterval, SN::InterfaceRef<SN::IAudioWaveformBuffer> inBuffer, bool inOption,
	bool inRequestFlag)
{
	return GenerateWaveform(
		inStartTime, inEndTime, {}, inSampleInterval, inBuffer, inOption, nullptr, inRequestFlag);
}

int PeakWaveformGenerator::GenerateWaveform(SN::TickTime const& inStartTime, SN::TickTime const& inEndTime,
	unsigned long long inSampleInterval, SN::InterfaceRef<SN::IAudioWaveformBuffer> inBuffer,
	std::shared_ptr<zorvcore::threads::Gate> inGate, bool inOption, bool inRequestFlag)
{
	return GenerateWaveform(
		inStartTime, inEndTime, {}, inSampleInterval, inBuffer, inOption, inGate, inRequestFlag);
}

int PeakWaveformGenerator::GenerateWaveform(SN::TickTime const& inStartTime, SN::TickTime const& inEndTime,
	SN::InterfaceRef<VX::ITimeTransform> const& inTransform, unsigned long long inSampleInterval,
	SN::InterfaceRef<SN::IAudioWaveformBuffer> inBuffer, bool,
	std::shared_ptr<zorvcore::threads::Gate> inGate, bool)
{
	if (!inBuffer)
	{
		return SN::eNullPointer;
	}
	GraphWindow::Range frames{inStartTime.ToFrame64(mFrameRate), inEndTime.ToFrame64(mFrameRate)};
	frames.mEnd = std::max(frames.mFirst, frames.mEnd);
	// An interval beyond any range is one column.
	auto const interval = static_cast<std::int64_t>(
		std::min<unsigned long long>(inSampleInterval, std::numeric_limits<std::int64_t>::max()));
	if (interval == 0 || (frames.mEnd - frames.mFirst) / interval >= kMostColumns)
	{
		return SN::eInvalidArgument;
	}
	std::lock_guard const lock(mGenerating);
	GraphWindow window(mGraph, mFrameRate, mChannels, mBlockFrames,
		{mStart.ToFrame64(mFrameRate), mEnd.ToFrame64(mFrameRate)});
	bool const isWhole = ComputeWaveform(window, *inBuffer,
		{.mFrames = frames,
			.mInterval = interval,
			.mFrameRate = mFrameRate,
			.mChannels = mChannels,
			.mTransform = inTransform ? &*inTransform : nullptr,
			.mGate = inGate.get()});
	return isWhole ? SN::kSuccess : zorvcore::eWaitFailed;
}

SN::InterfaceRef<SN::IAudioWaveformGenerator> PeakWaveformGenerator::GetSelfReference()
{
	return SN::InterfaceRef<SN::IAudioWaveformGenerator>::FromThis(this);
}

} // namespace SonaroHost
