#pragma once

#include "Sonaro/Types.h"

// One tag for each user of scratch buffers, so that nodes that run one inside the other never meet in
// one buffer, while nodes of one class, which run one after the other, share theirs.
namespace SN::StackAudioBufferTags
{

extern ImmutableString const kAudioClipRenderer;
extern ImmutableString const kAudioClipTrackRenderer;
extern ImmutableString const kAudioMixTrackRenderer;
extern ImmutableString const kAudioStreamRenderer;
extern ImmutableString const kAudioTrackInletRenderer;
extern ImmutableString const kAudioTransitionRenderer;
extern ImmutableString const kRealtimeAudioClipTrackItemRendererPan;
extern ImmutableString const kRealtimeAudioClipTrackItemRendererResampler;
extern ImmutableString const kTimeAlteredAudioClipTrackItemRendererPan;
extern ImmutableString const kTimeAlteredAudioClipTrackItemRendererResampler;
extern ImmutableString const kAudioChannelMatrixRenderer;
extern ImmutableString const kAudioPannerMonoToAdaptive;
extern ImmutableString const kAudioPannerStereoToAdaptive;

} // namespace SN::StackAudioBufferTags
