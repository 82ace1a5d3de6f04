#pragma once

#include "Sonaro/IAudioTimeScaler.h"

namespace SN
{

// Makes the time scalers of graphs.
class SONARO_API IAudioTimeScalerFactory : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioTimeScalerFactory> kIdentifier{
		0xc2f74a81d95e4b03ull, 0x8e17b6d03fa5c249ull};

	~IAudioTimeScalerFactory() override = default;

	// The scaler has still to be given its Init. The engine's own has one quality.
	virtual InterfaceRef<IAudioTimeScaler> CreateAudioTimeScaler(RenderQuality inQuality) = 0;
};

// The factory that graphs use from now on: the engine's own, unless a host has put another one in its place. There is no
// lock: it is set before anything is rendered. An empty reference leaves graphs that keep pitch unable to be made.
SONARO_API InterfaceRef<IAudioTimeScalerFactory> GetAudioTimeScalerFactory();
SONARO_API void SetAudioTimeScalerFactory(InterfaceRef<IAudioTimeScalerFactory> inFactory);

} // namespace SN
