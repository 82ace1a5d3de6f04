#pragma once

#include "zorvaudiodsp/AudioBuffer.h"

namespace dsp
{

// A window into another buffer, which must outlive its use. No memory of its own.
//
// Silence  A channel is silent when the window's own flag is set or the parent's is set now. Clearing a
//          flag here while the parent is flagged writes zeros into the parent outside the window and
//          clears the parent's flag, on upward through nested windows. Setting one sets the parent's
//          when the window covers the parent's whole UseSize, and writes zeros into the window if not.
class ZORV_API AudioSubBuffer final : public AudioBuffer
{
public:
	AudioSubBuffer() = default;
	AudioSubBuffer(AudioSubBuffer const&) = delete;

	// inChannels: at most 64. The window aims at nothing until Assign.
	void Init(unsigned long long inChannels);

	// Aims at ioParent from sample inOffset, clamped to its UseSize, up to the end of its UseSize.
	void Assign(AudioBuffer& ioParent, unsigned inOffset);

	// Moves the start forward, clamped to what is left, and takes as much off capacity and UseSize.
	void ShiftOffset(unsigned inSamples);

	void SetUseSize(unsigned inSamples) override;
	bool IsChannelSilent(unsigned long long inChannel) const override;
	void MarkChannelSilent(unsigned long long inChannel) override;
	void ClearSilenceFlags(SilenceFlags const& inFlags) override;
	SilenceFlags GetSilenceFlags() const override;
	void Zero() override;

private:
	void Aim(unsigned inOffset, unsigned inCapacity);
	SilenceFlags GetParentFlags() const;

	// One entry for each channel; the rest is never looked at, so that making a window is cheap.
	float* mWindowChannels[kMaxChannels];
	AudioBuffer* mParent = nullptr;
	// Where the window's first sample lies in the parent.
	unsigned mOffset = 0;
};

} // namespace dsp
