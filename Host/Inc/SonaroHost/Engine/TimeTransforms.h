#pragma once

#include "Sonaro/IdentityTimeTransform.h"
#include "Sonaro/Types.h"
#include "Vexilon/ITimeTransform.h"

#include <vector>

namespace SonaroHost
{

using SN::IdentityTimeTransform;

// Media that runs at one speed from an offset on: offset + time * speed, to the nearest tick.
//
// Speed  Finite. Below 0 it runs backwards, at 0 it stands still; 1 keeps every tick.
class SpeedTimeTransform final : public SN::Implements<SpeedTimeTransform, VX::ITimeTransform>
{
public:
	static constexpr SN::Identifier<SpeedTimeTransform> kIdentifier{
		0x14e9c7a2f06b3d85ull, 0x9c5d1f38ab7264e0ull};

	// Throws a HostError for a speed that is not finite.
	explicit SpeedTimeTransform(double inSpeed, SN::TickTime const& inOffset = SN::kTimeZero);

	SN::TickTime GetTime(SN::TickTime const& inTime) override { return mOffset + inTime * mSpeed; }

private:
	double mSpeed;
	SN::TickTime mOffset;
};

// A moment of the clip, and the moment of its media that is heard then.
struct TimeKey
{
	SN::TickTime mTime;
	SN::TickTime mSource;
};

// Time that is remapped by keys: straight lines between them, the first and the last line going on beyond
// the ends. The source may turn back or stand still; exact at the keys, to the nearest tick between.
// A single key stands for the speed 1 through it.
class KeyframedTimeTransform final : public SN::Implements<KeyframedTimeTransform, VX::ITimeTransform>
{
public:
	static constexpr SN::Identifier<KeyframedTimeTransform> kIdentifier{
		0x6f02b8d14ce3975aull, 0xa8317c5e09d4f6b2ull};

	// Throws a HostError unless there is a key and each is later than the one before.
	explicit KeyframedTimeTransform(std::vector<TimeKey> inKeys);

	SN::TickTime GetTime(SN::TickTime const& inTime) override;

private:
	std::vector<TimeKey> mKeys;
};

} // namespace SonaroHost
