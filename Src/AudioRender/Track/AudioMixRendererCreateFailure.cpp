#include "AudioRender/Track/AudioMixRendererCreateFailure.h"

namespace SN
{

AudioMixRendererCreateFailure::AudioMixRendererCreateFailure(char const* inFile, int inLine)
	: zorv_exception(inFile, inLine, zorvcore::eUnspecifiedFailure, "CreateAudioMixRenderer failed")
{
}

AudioMixRendererCreateFailure::AudioMixRendererCreateFailure(
	AudioMixRendererCreateFailure const&) noexcept = default;
AudioMixRendererCreateFailure& AudioMixRendererCreateFailure::operator=(
	AudioMixRendererCreateFailure const&) noexcept = default;
AudioMixRendererCreateFailure::~AudioMixRendererCreateFailure() = default;

} // namespace SN
