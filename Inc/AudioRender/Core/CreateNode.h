#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderContext.h"

namespace SN
{

// Makes a node of settings: a new one sets itself up by its InitFrom, and is handed out when that succeeds. eNullPointer
// without a context.
template <class Node, class Settings>
int CreateNode(Settings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator)
{
	if (!inSettings.mContext)
	{
		return eNullPointer;
	}
	auto const node = zorvcore::classref::MakeObject<Node>();
	int const result = node->InitFrom(inSettings);
	if (ResultSucceeded(result))
	{
		*outGenerator = node;
	}
	return result;
}

} // namespace SN
