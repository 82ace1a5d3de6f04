#include "AudioRender/Core/StackAudioBufferTags.h"

namespace SN::StackAudioBufferTags
{

ImmutableString const kAudioClipRenderer("AudioClipRenderer");
ImmutableString const kAudioClipTrackRenderer("AudioClipTrackRenderer");
ImmutableString const kAudioMixTrackRenderer("AudioMixTrackRenderer");
ImmutableString const kAudioStreamRenderer("AudioStreamRenderer");
ImmutableString const kAudioTrackInletRenderer("AudioTrackInletRenderer");
ImmutableString const kAudioTransitionRenderer("AudioTransitionRenderer");
ImmutableString const kRealtimeAudioClipTrackItemRendererPan("RealtimeAudioClipTrackItemRenderer::Pan");
ImmutableString const kRealtimeAudioClipTrackItemRendererResampler(
	"RealtimeAudioClipTrackItemRenderer::Resampler");
ImmutableString const kTimeAlteredAudioClipTrackItemRendererPan("TimeAlteredAudioClipTrackItemRenderer::Pan");
ImmutableString const kTimeAlteredAudioClipTrackItemRendererResampler(
	"TimeAlteredAudioClipTrackItemRenderer::Resampler");
ImmutableString const kAudioChannelMatrixRenderer("AudioChannelMatrixRenderer");
ImmutableString const kAudioPannerMonoToAdaptive("AudioPannerMonoToAdaptive");
ImmutableString const kAudioPannerStereoToAdaptive("AudioPannerStereoToAdaptive");

} // namespace SN::StackAudioBufferTags
