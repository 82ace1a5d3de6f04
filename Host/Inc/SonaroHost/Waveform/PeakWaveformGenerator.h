#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioWaveformGenerator.h"
#include "Sonaro/Types.h"

#include <mutex>

namespace SonaroHost
{

// Computes the waveform of a graph's audio: for each column minimum, maximum and RMS of its samples, in
// each channel of the graph.
//
// Columns    As many as the range has samples, divided by the interval; the last one may have fewer.
// Outside    What lies outside of the audio's start and end is silence and not pulled.
// Transform  A column then shows all audio that its time passes over, by straight steps of at most 64
//            samples, weighed by the time that is spent on it. Time that stands still shows one sample.
// Options    Both are of no effect.
// Results    kSuccess; eNullPointer without a buffer; eInvalidArgument for an interval of 0, and for more
//            than 2147483647 columns; eWaitFailed when it was given up: the buffer is not complete then.
//            Exceptions of the graph and of the transform pass through.
// Threads    Any; ranges are computed one after the other.
class PeakWaveformGenerator final : public SN::Implements<PeakWaveformGenerator, SN::IAudioWaveformGenerator>
{
public:
	static constexpr SN::Identifier<PeakWaveformGenerator> kIdentifier{
		0x97d25c08e1a6b34full, 0xc64b0f93d7185ea2ull};

	// The graph is pulled by this object alone, in blocks of at most inBlockFrames, the largest of its
	// context. It answers for IAudioGeneratorPrivate. Throws a HostError if it does not, or has no rate.
	PeakWaveformGenerator(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph, SN::TickTime const& inStart,
		SN::TickTime const& inEnd, unsigned inBlockFrames);

	int GetWaveformInfo(
		SN::TickTime& outStart, SN::TickTime& outEnd, unsigned long long& outChannels) override;
	int GenerateWaveform(SN::TickTime const& inStartTime, SN::TickTime const& inEndTime,
		unsigned long long inSampleInterval, SN::InterfaceRef<SN::IAudioWaveformBuffer> inBuffer,
		bool inOption, bool inRequestFlag) override;
	int GenerateWaveform(SN::TickTime const& inStartTime, SN::TickTime const& inEndTime,
		unsigned long long inSampleInterval, SN::InterfaceRef<SN::IAudioWaveformBuffer> inBuffer,
		std::shared_ptr<zorvcore::threads::Gate> inGate, bool inOption, bool inRequestFlag) override;
	int GenerateWaveform(SN::TickTime const& inStartTime, SN::TickTime const& inEndTime,
		SN::InterfaceRef<VX::ITimeTransform> const& inTransform, unsigned long long inSampleInterval,
		SN::InterfaceRef<SN::IAudioWaveformBuffer> inBuffer, bool inOption,
		std::shared_ptr<zorvcore::threads::Gate> inGate, bool inRequestFlag) override;
	SN::InterfaceRef<SN::IAudioWaveformGenerator> GetSelfReference() override;

private:
	SN::InterfaceRef<SN::IAudioGenerator> mGraph;
	SN::FrameRate mFrameRate;
	unsigned mChannels = 0;
	SN::TickTime mStart;
	SN::TickTime mEnd;
	unsigned mBlockFrames;
	std::mutex mGenerating;
};

} // namespace SonaroHost
