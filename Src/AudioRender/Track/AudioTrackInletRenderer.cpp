#include "AudioRender/Track/AudioTrackInletRenderer.h"

#include "AudioRender/Core/StackAudioBufferTags.h"

namespace SN
{

AudioTrackInletRenderer::Input::Input(InterfaceRef<UnknownBase> const& inNode)
	: mNode(inNode),
	  mCached(inNode),
	  mGenerator(inNode),
	  mProcessor(inNode)
{
}

int AudioTrackInletRenderer::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, std::vector<InterfaceRef<UnknownBase>> const& inInputs,
	AudioChannelLayout const& inChannels, InterfaceRef<IAudioGenerator>* outGenerator)
{
	if (!inContext)
	{
		return eNullPointer;
	}
	auto const renderer = zorvcore::classref::MakeObject<AudioTrackInletRenderer>();
	int const result = renderer->Init(inContext, inFrameRate);
	renderer->mChannels = inChannels;
	renderer->SetInputs(inInputs);
	if (ResultSucceeded(result))
	{
		*outGenerator = renderer;
	}
	return result;
}

void AudioTrackInletRenderer::SetInputs(std::vector<InterfaceRef<UnknownBase>> const& inNodes)
{
	for (InterfaceRef<UnknownBase> const& node : inNodes)
	{
		mInputs.emplace_back(node);
	}
	ReserveStackAudioBuffer(
		GetNumChannels(), GetMaxBlockSize(), StackAudioBufferTags::kAudioTrackInletRenderer);
}

InterfaceRef<IAudioGenerator> AudioTrackInletRenderer::Clone()
{
	auto const clone = StartClone(*this);
	clone->mChannels = mChannels;
	std::vector<InterfaceRef<UnknownBase>> nodes;
	nodes.reserve(mInputs.size());
	for (Input const& input : mInputs)
	{
		nodes.push_back(CloneInput(input));
	}
	clone->SetInputs(nodes);
	return clone;
}

InterfaceRef<UnknownBase> AudioTrackInletRenderer::CloneInput(Input const& inInput) const
{
	if (inInput.mCached)
	{
		// The very track, or send, that the cloned group renders.
		if (InterfaceRef<UnknownBase> const known = FindClone(inInput.mNode))
		{
			return known;
		}
	}
	if (inInput.mGenerator)
	{
		return inInput.mGenerator->Clone();
	}
	if (inInput.mProcessor)
	{
		return inInput.mProcessor->Clone(GetFrameRate(), GetMaxBlockSize(), GetControlInterval());
	}
	return inInput.mNode;
}

void AudioTrackInletRenderer::Preroll(TickTime const& inStartTime, bool inReverse)
{
	for (Input const& input : mInputs)
	{
		if (input.mGenerator)
		{
			input.mGenerator->Preroll(inStartTime, inReverse);
		}
	}
}

void AudioTrackInletRenderer::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	for (Input const& input : mInputs)
	{
		if (inForceCompletion && input.mGenerator)
		{
			input.mGenerator->FillInitialDelay(inStartTime, inDelayTime, inReverse, true);
		}
	}
}

void AudioTrackInletRenderer::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	for (Input const& input : mInputs)
	{
		// The requests of what is cached come through the group.
		if (!input.mCached && input.mGenerator)
		{
			input.mGenerator->AccumulatePrefetchRequests(inRange, inType, inAccumulator);
		}
	}
}

void AudioTrackInletRenderer::GetAudioData(TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	for (Input const& input : mInputs)
	{
		if (input.mCached)
		{
			input.mCached->MixCachedAudio(ioBuffer);
		}
		else
		{
			PullInput(input, inTime, ioBuffer, inReverse);
		}
	}
}

void AudioTrackInletRenderer::PullInput(
	Input const& inInput, TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) const
{
	ScopedStackAudioBuffer const scratch(GetStackAudioBuffer(
		static_cast<unsigned>(mChannels.size()), StackAudioBufferTags::kAudioTrackInletRenderer));
	dsp::AudioBuffer& buffer = scratch.GetBuffer();
	buffer.SetUseSize(ioBuffer.GetUseSize());
	buffer.Zero();
	inInput.mGenerator->GetAudioData(inTime, buffer, inReverse);
	ioBuffer.Mix(buffer);
}

std::vector<InterfaceRef<UnknownBase>> AudioTrackInletRenderer::GetInputNodes()
{
	std::vector<InterfaceRef<UnknownBase>> nodes;
	for (Input const& input : mInputs)
	{
		if (InterfaceRef<IAudioRenderGraphNodeInfo>(input.mNode))
		{
			nodes.push_back(input.mNode);
		}
	}
	return nodes;
}

void AudioTrackInletRenderer::VisitNodes(NodeVisitor& ioVisitor)
{
	for (Input const& input : mInputs)
	{
		if (input.mGenerator)
		{
			ioVisitor.Visit(input.mGenerator);
		}
		else if (input.mProcessor)
		{
			ioVisitor.Visit(input.mProcessor);
		}
	}
}

} // namespace SN
