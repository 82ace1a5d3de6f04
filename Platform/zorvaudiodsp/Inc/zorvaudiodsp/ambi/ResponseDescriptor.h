#pragma once

namespace dsp::ambi
{

// The order in which the components of an ambisonic sound come.
enum class ChannelOrdering : unsigned
{
	// By Ambisonic Channel Number: W, Y, Z, X.
	kACN = 2,
};

// How its components are scaled.
enum class Normalization : unsigned
{
	// Semi-normalised after Schmidt: sound of amplitude 1 that comes along an axis has 1 in W and 1 on that axis.
	kSN3D = 1,
};

// How much of W, Y, Z and X is heard through a response.
struct FieldGains
{
	float mW = 0.0f;
	float mY = 0.0f;
	float mZ = 0.0f;
	float mX = 0.0f;
};

// The responses at one sample rate, in hertz.
struct ResponseSet
{
	unsigned mSampleRate = 0;
	unsigned mNumTaps = 0;
};

// What lies in the memory of impulse responses of two ears. Each ear has memory of its own with all sets after each
// other, in each set all responses, and of each response all taps.
//
// The responses may be those of directions, each with what a loudspeaker there would get of the sound, or filters of
// the four components, each with one gain of 1.
struct ResponseDescriptor
{
	unsigned mNumResponses = 0;
	// One for each response.
	FieldGains const* mGains = nullptr;
	unsigned mNumSets = 0;
	ResponseSet const* mSets = nullptr;
};

} // namespace dsp::ambi
