#pragma once

#include "zorvaudiodsp/ambi/ResponseDescriptor.h"

#include <array>
#include <string>
#include <vector>

namespace SonaroHost
{

// How the ears of a listener hear the four components of a sound field: filters of W, Y, Z and X for each ear.
// Threads: any.
class Ears
{
public:
	static constexpr unsigned kNumEars = 2;
	static constexpr unsigned kNumComponents = 4;

	// For each ear its filters, all of so many taps, one after the other.
	using Taps = std::array<std::vector<float>, kNumEars>;

	// inName: for people. inSampleRate: in hertz.
	Ears(std::string inName, unsigned inSampleRate, unsigned inNumTaps, Taps inTaps);
	Ears(Ears const&) = delete;
	Ears& operator=(Ears const&) = delete;

	std::string const& GetName() const { return mName; }
	// What dsp::ambi::AmbisonicsBinauralizer::Load takes; it lives as long as this.
	dsp::ambi::ResponseDescriptor const& GetDescriptor() const { return mDescriptor; }
	float const* GetLeftData() const { return mTaps[0].data(); }
	float const* GetRightData() const { return mTaps[1].data(); }

private:
	std::string mName;
	dsp::ambi::ResponseSet mSet;
	Taps mTaps;
	dsp::ambi::ResponseDescriptor mDescriptor;
};

} // namespace SonaroHost
