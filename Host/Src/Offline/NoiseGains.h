#pragma once

#include "SonaroHost/Offline/NoiseProfile.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace SonaroHost
{

// Decides how much of each bin of short-time spectra stays, one frame after the other.
//
// Method   A Wiener filter whose ratio of sound to noise is estimated as Ephraim and Malah do it ("Speech enhancement using
//          a minimum mean-square error short-time spectral amplitude estimator", 1984), which follows sound at once and
//          averages noise; it is used as Plapous, Marro and Scalart do it ("Improved signal-to-noise ratio estimation for
//          speech enhancement", 2006), in two steps, so that beginnings of sound are not late.
// Channels Each bin gets the largest gain that one of its channels asks for, so that nothing moves between channels.
//          A channel that is silent there asks for none.
// Memory   The estimate starts anew for every 64 frames, 16 frames before them, so that the gains of a frame depend on
//          nothing before that.
// Threads  One at a time. The constructor alone allocates.
class NoiseGains
{
public:
	// inFloor: the least gain, as a linear factor.
	NoiseGains(std::shared_ptr<NoiseProfile const> inProfile, unsigned inChannels, float inFloor);

	// The first frame of those on which the gains of a frame depend.
	static std::int64_t FindFirstFrame(std::int64_t inFrame);
	// Starts at a frame that FindFirstFrame has given.
	void Start(std::int64_t inFrame);

	// The gains of the next frame. inPower: of all bins, one channel after the other.
	void Decide(std::span<float const> inPower, std::span<float> outGains);

private:
	// What is carried from frame to frame: the power of the sound by that of the noise, of all bins and channels.
	using Memory = std::vector<float>;

	std::shared_ptr<NoiseProfile const> mProfile;
	unsigned mChannels;
	float mFloor;
	std::int64_t mNextFrame = 0;
	Memory mMemory;
	// That of the next part, from 16 frames before it on.
	Memory mNextMemory;
};

} // namespace SonaroHost
