#include "AudioRender/Core/StackAudioBufferTags.h"

#include "zorvcore/Early.h"

namespace SN::StackAudioBufferTags
{

ZORV_EARLY ImmutableString const kAudioClipRenderer("AudioClipRenderer");
ZORV_EARLY ImmutableString const kAudioClipTrackRenderer("AudioClipTrackRenderer");
ZORV_EARLY ImmutableString const kAudioMixTrackRenderer("AudioMixTrackRenderer");
ZORV_EARLY ImmutableString const kAudioStreamRenderer("AudioStreamRenderer");
ZORV_EARLY ImmutableString const kAudioTrackInletRenderer("AudioTrackInletRenderer");
ZORV_EARLY ImmutableString const kAudioTransitionRenderer("AudioTransitionRenderer");
ZORV_EARLY ImmutableString const kRealtimeAudioClipTrackItemRendererPan(
	"RealtimeAudioClipTrackItemRenderer::Pan");
ZORV_EARLY ImmutableString const kRealtimeAudioClipTrackItemRendererResampler(
	"RealtimeAudioClipTrackItemRenderer::Resampler");
ZORV_EARLY ImmutableString const kTimeAlteredAudioClipTrackItemRendererPan(
	"TimeAlteredAudioClipTrackItemRenderer::Pan");
ZORV_EARLY ImmutableString const kTimeAlteredAudioClipTrackItemRendererResampler(
	"TimeAlteredAudioClipTrackItemRenderer::Resampler");
ZORV_EARLY ImmutableString const kAudioChannelMatrixRenderer("AudioChannelMatrixRenderer");
ZORV_EARLY ImmutableString const kAudioPannerMonoToAdaptive("AudioPannerMonoToAdaptive");
ZORV_EARLY ImmutableString const kAudioPannerStereoToAdaptive("AudioPannerStereoToAdaptive");

} // namespace SN::StackAudioBufferTags
