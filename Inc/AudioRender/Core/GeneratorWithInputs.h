#pragma once

#include "AudioRender/Core/NodeVisitor.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/ILiveAudioParameterOwner.h"

namespace SN
{

// The base of generators that run other nodes: what concerns all of these, it hands on in the order in which
// VisitNodes shows them. A class overrides what it does otherwise.
//
// Errors  An empty input or processor raises the null-pointer exception in every operation that is handed on.
class GeneratorWithInputs : public Implements<GeneratorWithInputs, IAudioGenerator, IAudioGeneratorPrivate,
								IAudioRenderGraphNodeInfo>
{
public:
	// True as soon as one of the nodes has one.
	bool HasHistory() override;
	void Reset() override;
	// Pan processors have no effects to start or stop.
	void InitializeAudioFilters() override;
	void ShutdownAudioFilters() override;

	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override { return GetNumChannels(); }

	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override;
	// The pan processor, which may be empty, is the last.
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override;

protected:
	// Shows the inputs in their order, then the processors in theirs, then the pan processor. Allocates nothing.
	virtual void VisitNodes(NodeVisitor& ioVisitor) = 0;

	// Serves IAudioRecordCompletion: notifies the inputs that answer to it.
	void NotifyInputs(InterfaceRef<UnknownBase> const& inRecording);
};

// The same for those that tell of the live parameters below them.
class LiveGeneratorWithInputs
	: public Implements<LiveGeneratorWithInputs, GeneratorWithInputs, ILiveAudioParameterOwner>
{
public:
	// Asks the pan processor, the processors and the inputs, where they answer to this interface.
	void CollectLiveParameters(LiveAudioParameterMap& outParameters) override;
};

} // namespace SN
