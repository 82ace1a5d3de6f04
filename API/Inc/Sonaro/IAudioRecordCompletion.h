#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// A node that hears when a recording into its media has ended.
class SONARO_API IAudioRecordCompletion : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioRecordCompletion> kIdentifier{
		0xed07b6ba04d59391ull, 0x7e02a5b404eb8ad2ull};

	// inRecording is the host's; containers pass it on unchanged to each child that listens.
	virtual void NotifyRecordComplete(InterfaceRef<UnknownBase> const& inRecording) = 0;
};

} // namespace SN
