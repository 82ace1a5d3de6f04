#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/GeneratorWithInputs.h"
#include "Sonaro/GeneratorSettings.h"
#include "zorvaudiodsp/AudioBufferShell.h"

#include <vector>

namespace SN
{

// One clip out of one or more generators: routes their channels onto the clip's layout, applies a fixed
// gain and shifts time by the clip's start offset. Each generator runs into a scratch buffer, save a single
// one whose channels stay what they are; what it does not fill of the request is silent.
//
// Latency  the largest of the generators'.
// Silence  output channels from the number of generators on are flagged silent before the generators
//          run; lower ones that no channel map names stay as the caller left them.
class AudioClipRenderer final : public Implements<AudioClipRenderer, GeneratorWithInputs>,
								public AudioRenderContextClient
{
public:
	// See ISonaroFactory::CreateAudioClipRenderer. Empty generator references are allowed, and skipped.
	int InitFrom(AudioClipSettings const& inSettings);

	InterfaceRef<IAudioGenerator> Clone() override;
	TickTime GetDelay() SONARO_NONBLOCKING override;
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING override;

	unsigned GetNumChannels() SONARO_NONBLOCKING override
	{
		return static_cast<unsigned>(mChannelLayout.size());
	}
	AudioChannelLayout GetAudioChannelLayout() override { return mChannelLayout; }
	FrameRate GetGeneratorFrameRate() override { return GetFrameRate(); }

	std::u16string GetNodeName() override { return u"AudioClipRenderer"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override;

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override;

private:
	struct Input
	{
		// May be empty.
		InterfaceRef<IAudioGenerator> mGenerator;
		// Maps channels of the clip to channels of the generator.
		AudioChannelMap mChannels;
		// Channels of the generator, 0 for an empty reference.
		unsigned mWidth = 0;
	};

	// Calls inFunction with each generator that is there, in their order.
	template <class Function>
	void ForEachGenerator(Function const& inFunction);

	// Learns the generators' widths; the rate of the last one, or inFrameRate.
	FrameRate MeasureGenerators(FrameRate const& inFrameRate);
	// Whether a single generator gives all the clip's channels in their order.
	bool KeepsChannels() const;
	void RunGenerators(TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse);
	void RunIntoScratch(
		Input const& inInput, TickTime const& inTime, bool inReverse, dsp::AudioBuffer& ioScratch);

	// Ordered by the address of the generator.
	std::vector<Input> mInputs;
	AudioChannelLayout mChannelLayout;
	// The time that is added to each requested one.
	TickTime mStartOffset;
	float mGain = 1.0f;
	bool mHasGain = false;
	bool mKeepsChannels = false;
	// Channels of the scratch buffer: the clip's or the widest generator's.
	unsigned mMaxChannels = 0;
	// Shows a single generator that is narrower than the scratch a buffer of its own width.
	dsp::AudioBufferShell mShell;
};

} // namespace SN
