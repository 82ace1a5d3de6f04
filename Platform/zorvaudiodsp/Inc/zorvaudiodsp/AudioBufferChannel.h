#pragma once

#include "zorvaudiodsp/AudioBuffer.h"

namespace dsp
{

// A buffer of one channel: a view of one channel of a parent, which must outlive its use. Its silence flag is the
// parent's. A channel that the parent lacks reads as silence, and what is written to it is dropped.
class ZORV_API AudioBufferChannel final : public AudioBuffer
{
public:
	AudioBufferChannel() = default;
	AudioBufferChannel(AudioBufferChannel const&) = delete;

	// The view has the parent's capacity and starts with its UseSize.
	void Assign(AudioBuffer& ioParent, unsigned long long inChannel);
	// The same for a view that is only read.
	void AssignForReading(AudioBuffer const& inParent, unsigned long long inChannel);

	bool IsChannelSilent(unsigned long long inChannel) const override;
	void MarkChannelSilent(unsigned long long inChannel) override;
	void ClearSilenceFlags(SilenceFlags const& inFlags) override;
	SilenceFlags GetSilenceFlags() const override;
	void Zero() override { MarkChannelSilent(0); }

private:
	float* mViewedChannel = nullptr;
	AudioBuffer* mParent = nullptr;
	unsigned long long mParentChannel = 0;
};

} // namespace dsp
