#include "Sonaro/AudioFilterException.h"

namespace SN
{

AudioFilterException::AudioFilterException(
	InterfaceRef<IAudioFilter> const& inFilter, std::string_view inMessage)
	: zorv_exception({}, 0, zorvcore::eUnspecifiedFailure, inMessage),
	  mFilter(inFilter)
{
}

AudioFilterException::AudioFilterException(AudioFilterException const&) noexcept = default;
AudioFilterException& AudioFilterException::operator=(AudioFilterException const&) noexcept = default;
AudioFilterException::~AudioFilterException() = default;

} // namespace SN
