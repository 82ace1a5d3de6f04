#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioProcessor.h"

#include <memory>

namespace SN
{

// Is shown the nodes that a generator runs, one after the other.
class NodeVisitor
{
public:
	virtual ~NodeVisitor() = default;

	void Visit(InterfaceRef<IAudioGenerator> const& inInput) { Visit(inInput, inInput.GetUnknown()); }
	// inIdentity: the input's, also where it is no generator.
	virtual void Visit(
		InterfaceRef<IAudioGenerator> const& inInput, std::shared_ptr<Unknown> const& inIdentity) = 0;
	virtual void Visit(InterfaceRef<IAudioProcessor> const& inProcessor) = 0;
	// May be empty.
	virtual void Visit(InterfaceRef<IAudioPanProcessor> const& inPanProcessor) = 0;
};

} // namespace SN
