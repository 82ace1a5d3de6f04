#pragma once

#include "Sonaro/AudioChannelMatrixMasks.h"
#include "Sonaro/Types.h"

namespace SN
{

// The routing that a panner of an adaptive track carries: which input channel feeds which outputs.
class AudioPannerDirectChannelAssignmentBase
{
public:
	virtual ~AudioPannerDirectChannelAssignmentBase() = default;

	void Init(AudioChannelMatrix const& inMatrix, AudioChannelLayout const& inOutputLayout);

	AudioChannelMatrix const& GetMatrix() const { return mMatrix; }
	AudioChannelLayout const& GetOutputLayout() const { return mOutputLayout; }
	// The outputs that the matrix names.
	ChannelMask const& GetOutputMask() const { return mOutputMask; }

	// Routes at full level. An output that several inputs feed is their sum, one that none feeds is
	// silent, and one beyond the layout is passed over.
	void Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) const SONARO_NONBLOCKING;

private:
	AudioChannelMatrix mMatrix;
	AudioChannelLayout mOutputLayout;
	ChannelMask mOutputMask;
};

} // namespace SN
