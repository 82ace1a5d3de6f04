#pragma once

#include "Sonaro/IAudioFilter.h"
#include "Sonaro/Types.h"
#include "zorvcore/config/Exceptions.h"

#include <string_view>

namespace SN
{

// The code of an effect has caused a machine exception. What the effect was doing is left half done: it is best not
// called again. Its result code is eUnspecifiedFailure.
class SONARO_API AudioFilterException : public zorvcore::config::zorv_exception
{
public:
	AudioFilterException(InterfaceRef<IAudioFilter> const& inFilter, std::string_view inMessage);
	AudioFilterException(AudioFilterException const&) noexcept;
	AudioFilterException& operator=(AudioFilterException const&) noexcept;
	~AudioFilterException() override;

	InterfaceRef<IAudioFilter> const& GetAudioFilter() const noexcept { return mFilter; }

private:
	InterfaceRef<IAudioFilter> mFilter;
};

} // namespace SN
