#pragma once

#include "Sonaro/Types.h"
#include "zorvcore/async/Future.h"

#include <memory>

namespace SN
{

// Processed audio as it is finished, in order, from an IOfflineAudioProcessor. A worker of the processor's own fills it;
// when the last reference goes, it ends.
//
// Threads  The worker pulls its source only from a call of GetNextBuffer until the future of that call has its outcome, a
//          value, a failure or a cancellation. At all other times the source is the render thread's alone.
class SONARO_API IProcessedAudioStream : public virtual Unknown
{
public:
	static constexpr Identifier<IProcessedAudioStream> kIdentifier{
		0x35a310bd6c60b44bull, 0x28a66fb06660a4b3ull};

	// The buffer after the one that was asked for last: any number of samples from 1 on. The future fails at the end of
	// the stream and where the process fails. Whoever asks waits for one buffer before it asks for the next.
	virtual zorvcore::async::Future<std::shared_ptr<dsp::AudioBuffer>> GetNextBuffer() = 0;

	~IProcessedAudioStream() override = default;
};

} // namespace SN
