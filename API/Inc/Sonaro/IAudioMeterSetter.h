#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// A meter, implemented by the host. The engine calls SetMeterData and Reset, on the render thread, where
// nothing may lock or allocate; the other two are the host's own.
class SONARO_API IAudioMeterSetter : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioMeterSetter> kIdentifier{0x93c5e01f7a2b4d68ull, 0xbd046f8e1c95a273ull};

	// For a graph of this rate and width.
	virtual void Init(FrameRate const& inFrameRate, unsigned inChannels) = 0;
	// Hears the UseSize samples of inBuffer, the block that starts at inTime, and leaves them alone.
	virtual void SetMeterData(
		dsp::AudioBuffer const& inBuffer, TickTime const& inTime) SONARO_NONBLOCKING = 0;
	// Frees what Init has made.
	virtual void Shutdown() = 0;
	// A run ends: the meter falls back.
	virtual void Reset() = 0;

	~IAudioMeterSetter() override = default;
};

} // namespace SN
