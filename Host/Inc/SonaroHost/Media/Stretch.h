#pragma once

#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Base/SpeedCurve.h"

#include <compare>
#include <cstdint>
#include <optional>

namespace SonaroHost
{

// What changes length and pitch apart from each other.
enum class StretchEngine
{
	// The engine's time scaler, a phase vocoder.
	kScaler,
	// The engine's stretching in the time domain, with a phase vocoder for steady chords.
	kOmega,
	// Rubber Band.
	kRubberBand,
};

// What stretches where nothing else is asked for: what Docs/stretching.md finds best.
inline constexpr StretchEngine kDefaultStretchEngine = StretchEngine::kOmega;

// How a file is heard as another recording, at a speed and a pitch of its own.
//
// Position  Frame k of the recording stands exactly at the file's frame mStart + k * mSpeed, so that nothing drifts;
//           it ends with the file. Along a ramp, it stands at the integral of the curve from mStart on. It has the file's sample rate, layout and name.
// Decoding  Its samples depend on all that came before, so it is always decoded in order, from its start.
struct Stretch
{
	// The range of the speed divided by the pitch factor.
	static constexpr double kLowestSpeed = 0.1;
	static constexpr double kHighestSpeed = 10.0;
	// The largest shift of the pitch in either direction, two octaves.
	static constexpr double kMostSemitones = 24.0;

	// Frames of the file that pass in one of the recording, above 0: 2 is twice as fast.
	Ratio mSpeed = Ratio(1);
	// What all frequencies are multiplied by, above 0. The engine may miss it a little.
	Ratio mPitch = Ratio(1);
	StretchEngine mEngine = kDefaultStretchEngine;
	// The file's frame at which the recording begins, or a place between two; 0 or above.
	Ratio mStart;

	// Where the speed changes: how fast the file passes at each time of the recording, in place of mSpeed.
	struct Ramp
	{
		// All speeds that are used are above 0, or all are below.
		SpeedCurve mCurve;
		// The frames of the recording.
		std::int64_t mFrames = 0;

		friend auto operator<=>(Ramp const&, Ramp const&) = default;
	};
	// Speeds below 0 pass the file as fast forward, and the time of the curve goes backwards: it is 0 where the recording
	// begins, and lower after that.
	std::optional<Ramp> mRamp;

	// The factor of a shift, to a hundredth of a cent.
	static Ratio GetPitchFactor(double inSemitones);

	// Whether the file is heard as it is, but for its start.
	bool IsPlain() const { return mSpeed == Ratio(1) && mPitch == Ratio(1) && !mRamp; }
	// Whether the speed that stays and the pitch lie in the range above.
	bool IsInRange() const;
	// What of so many frames of a file there is of the recording.
	std::int64_t CountFrames(std::int64_t inFileFrames) const;

	friend auto operator<=>(Stretch const&, Stretch const&) = default;
};

// Throws a HostError for an engine that is not built in, which says what brings it.
void CheckIsBuiltIn(StretchEngine inEngine);

} // namespace SonaroHost
