#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/GeneratorWithInputs.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/ICachedAudioGenerator.h"

#include <vector>

namespace SN
{

// Where a submix or the master receives its tracks: adds to the caller's buffer, which the caller has
// cleared, what each input has for the request.
//
// Inputs   What has been rendered ahead, by a group or by a send, is mixed from its cache; a track that feeds
//          two inlets is thus rendered once. Other generators are pulled here. Null inputs, and those that
//          are neither, raise the null-pointer exception when they are to be heard.
// Latency  None: what lies behind an inlet has its place in the delays of the group.
// Threads  That of the group; AccumulatePrefetchRequests may come from another.
class AudioTrackInletRenderer final : public Implements<AudioTrackInletRenderer, GeneratorWithInputs>,
									  public AudioRenderContextClient
{
public:
	// See ISonaroFactory::CreateAudioTrackInletRenderer.
	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		std::vector<InterfaceRef<UnknownBase>> const& inInputs, AudioChannelLayout const& inChannels,
		InterfaceRef<IAudioGenerator>* outGenerator);

	InterfaceRef<IAudioGenerator> Clone() override;
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;

	unsigned GetNumChannels() SONARO_NONBLOCKING override { return static_cast<unsigned>(mChannels.size()); }
	AudioChannelLayout GetAudioChannelLayout() override { return mChannels; }
	FrameRate GetGeneratorFrameRate() override { return GetFrameRate(); }

	std::u16string GetNodeName() override { return u"AudioTrackInletRenderer"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override;
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override;

private:
	// A node with what it was asked for once; each may be empty.
	struct Input
	{
		explicit Input(InterfaceRef<UnknownBase> const& inNode);

		InterfaceRef<UnknownBase> mNode;
		InterfaceRef<ICachedAudioGenerator> mCached;
		InterfaceRef<IAudioGenerator> mGenerator;
		InterfaceRef<IAudioProcessor> mProcessor;
	};

	void SetInputs(std::vector<InterfaceRef<UnknownBase>> const& inNodes);
	void PullInput(
		Input const& inInput, TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) const;
	InterfaceRef<UnknownBase> CloneInput(Input const& inInput) const;

	std::vector<Input> mInputs;
	AudioChannelLayout mChannels;
};

} // namespace SN
