#pragma once

#include "Sonaro/Types.h"

#include <map>

namespace SN
{

class IRenderableAudioComponentParam;

// A parameter with an action pending, and its owner's action flag.
struct LiveAudioParameter
{
	InterfaceRef<IRenderableAudioComponentParam> mParameter;
	bool mActionFlag = false;
};

// Keyed by the parameter's identity.
using LiveAudioParameterMap = std::map<Unknown*, LiveAudioParameter>;

// A node that owns parameters, or children that do.
class SONARO_API ILiveAudioParameterOwner : public virtual Unknown
{
public:
	static constexpr Identifier<ILiveAudioParameterOwner> kIdentifier{
		0xfad95a185bea239cull, 0x4a3b4a6566bcb666ull};

	// Adds every parameter here and below that reports a pending action. An entry that is there already
	// stays as it is: the first owner to report a shared parameter decides the flag.
	virtual void CollectLiveParameters(LiveAudioParameterMap& outParameters) = 0;
};

} // namespace SN
