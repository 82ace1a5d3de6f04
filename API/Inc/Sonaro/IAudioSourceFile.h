#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// What a source that is a file can tell of it.
class SONARO_API IAudioSourceFile : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioSourceFile> kIdentifier{0x390dffab8bffb041ull, 0x0d697a81b7b00506ull};

	// True while the file is being written: it is then read whatever its duration says.
	virtual bool IsGrowing() SONARO_NONBLOCKING = 0;
	// For people and error messages.
	virtual ImmutableString GetPath() = 0;
	// Counts up whenever the file's content was replaced.
	virtual unsigned GetRevision() = 0;
	// A file that does not grow is silent from here on and not read.
	virtual TickTime GetDuration() SONARO_NONBLOCKING = 0;
};

} // namespace SN
