#pragma once

#include "Sonaro/Types.h"

#include <functional>

namespace SN
{

class IProcessedAudioStream;

// Reads source audio for an offline process: inCount samples from sample inStart on into the first of ioChannels. On
// one thread at a time, whichever it is.
using OfflineAudioReadCallback = std::function<void(float** ioChannels, long long inStart, int inCount)>;

// Processing that needs whole stretches of audio and gives its results at its own pace.
class SONARO_API IOfflineAudioProcessor : public virtual Unknown
{
public:
	static constexpr Identifier<IOfflineAudioProcessor> kIdentifier{
		0xf253fa5b2cb067a5ull, 0x68e10a6f63b22edcull};

	// By how much the processed audio comes later than its source, 0 or above.
	virtual TickTime GetOfflineLatency() = 0;

	// A stream of processed audio of that duration, which pulls its source through inCallback. inFlags
	// are the effect's own; the engine passes 0. An empty one counts as a stream that has failed.
	virtual InterfaceRef<IProcessedAudioStream> CreateProcessedStream(
		OfflineAudioReadCallback const& inCallback, unsigned inFlags, TickTime const& inDuration) = 0;
};

} // namespace SN
