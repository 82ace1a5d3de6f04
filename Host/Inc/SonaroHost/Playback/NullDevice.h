#pragma once

#include "SonaroHost/Playback/ClockedDevice.h"

namespace SonaroHost::Playback
{

// Hears everything and keeps nothing: for machines without a sound card, and for measuring.
class NullDevice final : public ClockedDevice
{
public:
	explicit NullDevice(double inSpeed = 1.0)
		: ClockedDevice(inSpeed)
	{
	}
	~NullDevice() override { Stop(); }

private:
	void Take(float const*, unsigned) override {}
};

} // namespace SonaroHost::Playback
