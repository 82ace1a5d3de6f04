#pragma once

#include "Sonaro/Types.h"

#include <string>
#include <vector>

namespace SN
{

// For inspection of a graph; no render path depends on it. On the thread that owns the graph.
class SONARO_API IAudioRenderGraphNodeInfo : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioRenderGraphNodeInfo> kIdentifier{
		0x670a1a27258c6df8ull, 0x1ec20bc64a74c33aull};

	// The node's class name, for instance "AudioClipRenderer".
	virtual std::u16string GetNodeName() = 0;
	// The nodes that feed this one: the generators of a clip, the items of a track, a stream's source.
	virtual std::vector<InterfaceRef<UnknownBase>> GetInputNodes() = 0;
	// The processors that this node runs, in order of use.
	virtual std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() = 0;
};

} // namespace SN
