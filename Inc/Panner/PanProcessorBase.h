#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/Types.h"

#include <utility>

namespace SN
{

// What a pan processor reports about itself.
struct PanProcessorShape
{
	char16_t const* mNodeName = u"";
	AudioChannelType mInputType = VX::kAudioChannelTypeMono;
	AudioChannelType mOutputType = VX::kAudioChannelTypeMono;
	AudioChannelLayout mInputLayout;
	AudioChannelLayout mOutputLayout;
};

// The base of all pan processors: a stage from one layout to another, without history or inputs of its
// own, and with nothing to prepare.
class PanProcessorBase : public Implements<PanProcessorBase, IAudioPanProcessor, IAudioRenderGraphNodeInfo>,
						 public AudioRenderContextClient
{
public:
	bool HasHistory() override { return false; }
	AudioChannelType GetInputChannelType() override { return mShape.mInputType; }
	AudioChannelType GetOutputChannelType() override { return mShape.mOutputType; }
	AudioChannelLayout GetInputAudioChannelLayout() override { return mShape.mInputLayout; }
	AudioChannelLayout GetOutputAudioChannelLayout() override { return mShape.mOutputLayout; }
	unsigned GetNumInputChannels() SONARO_NONBLOCKING override
	{
		return static_cast<unsigned>(mShape.mInputLayout.size());
	}
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override
	{
		return static_cast<unsigned>(mShape.mOutputLayout.size());
	}
	bool DoesNotAlterAudio() SONARO_NONBLOCKING override { return false; }
	void Preroll(TickTime const&, bool) override {}
	void Reset() override {}

	std::u16string GetNodeName() override { return mShape.mNodeName; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

protected:
	// Without a shape yet.
	PanProcessorBase() = default;
	// Makes a processor between the layouts of two types.
	PanProcessorBase(char16_t const* inNodeName, AudioChannelType inInputType, AudioChannelType inOutputType);

	void SetShape(PanProcessorShape inShape) { mShape = std::move(inShape); }
	// The shape between any layouts.
	void SetShape(char16_t const* inNodeName, AudioChannelLayout const& inInputLayout,
		AudioChannelLayout const& inOutputLayout);
	void SetOutputLayout(AudioChannelLayout const& inLayout) { mShape.mOutputLayout = inLayout; }

	// Takes over the context and the shape of inOther. What changes with the rate or the control interval is
	// a derived class's own.
	void CopyFrom(PanProcessorBase const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval);

private:
	PanProcessorShape mShape;
};

} // namespace SN
