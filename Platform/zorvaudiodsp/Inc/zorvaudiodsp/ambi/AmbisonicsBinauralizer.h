#pragma once

#include "zorvaudiodsp/ambi/EulerAngle.h"
#include "zorvaudiodsp/ambi/ResponseDescriptor.h"
#include "zorvcore/Export.h"

#include <memory>

namespace dsp::ambi
{

class EarConvolver;

// Renders ambisonic sound of the first order for two ears.
//
// Axes      X points to the front, Y to the left, Z up.
// Head      The sound is turned against the head. A new orientation is reached in a straight line from the old matrix to
//           the new one over one block; the first block begins at its own. No angle is interpolated, so no orientation
//           is singular.
// Ears      Each component goes through a filter for each ear. The first taps work in the time domain, the others by
//           Fourier transforms of blocks of a fixed size: there is no latency beyond that of the responses.
// Blocks    While the head rests, any cut into blocks gives the same bits. While it moves, a block is what its movement
//           is spread over.
// Rates     The set of the nearest rate is used; at another rate it is resampled when it is loaded.
// Memory    Process and Reset to the same rate allocate nothing.
// Threads   One at a time.
class ZORV_API AmbisonicsBinauralizer
{
public:
	static constexpr unsigned kNumEars = 2;
	// Blocks of the transforms begin at multiples of so many samples after the start or the last Reset.
	static constexpr unsigned kTransformFrames = 64;

	// inSampleRate: in hertz. Outside of 1000 to 768000 nothing is ever loaded. inMaxFrames: the largest block that is
	// planned; longer ones work as well. Throws zorv_exception for any other order, ordering or scale than 1,
	// kACN and kSN3D.
	AmbisonicsBinauralizer(unsigned long long inSampleRate, unsigned inMaxFrames, unsigned inOrder,
		ChannelOrdering inOrdering, Normalization inNormalization);
	AmbisonicsBinauralizer(AmbisonicsBinauralizer const&) = delete;
	AmbisonicsBinauralizer& operator=(AmbisonicsBinauralizer const&) = delete;
	~AmbisonicsBinauralizer();

	// Makes filters of the responses, of which nothing is needed afterwards, and starts anew. Without a set of at least
	// one tap nothing is loaded.
	void Load(ResponseDescriptor const& inDescriptor, float const* inLeft, float const* inRight);
	// How many samples before a sample can change one bit of it, where both starts that are compared have the same
	// blocks of transforms. inSampleRate: as that of the constructor.
	static unsigned GetSettlingFrames(ResponseDescriptor const& inDescriptor, unsigned inSampleRate);
	// From here on both ears hear silence.
	void Unload();
	// Forgets what was heard and where the head was. Another rate also unloads.
	void Reset(unsigned long long inSampleRate, unsigned inMaxFrames);

	// The components of the order.
	unsigned GetNumChannels() const { return kNumComponents; }

	// inFrames: at most 2^24. inInputs: inNumInputs channels in the order W, Y, Z, X; absent ones are silent and
	// further ones are not heard. outOutputs: two channels, whatever inNumOutputs says; they may be inputs.
	void Process(EulerAngle const& inOrientation, unsigned inFrames, unsigned long long inNumInputs,
		unsigned long long inNumOutputs, float const* const* inInputs, float* const* outOutputs);

private:
	static constexpr unsigned kNumComponents = 4;
	// By which Y, Z and X of the head are made of those of the room: rows of weights in this order.
	struct Matrix
	{
		bool operator==(Matrix const&) const = default;

		float mRows[3][3] = {};
	};

	static Matrix GetMatrix(EulerAngle const& inOrientation);
	// Writes the turned Y, Z and X of inCount samples, of which the first is inFirst in a block of inFrames.
	void Turn(Matrix const& inTarget, unsigned inFirst, unsigned inCount, unsigned inFrames,
		float const* const* inComponents);

	unsigned long long mSampleRate;
	std::unique_ptr<EarConvolver> mConvolver;
	Matrix mMatrix;
	// Whether a block has set mMatrix.
	bool mHasMatrix = false;
};

} // namespace dsp::ambi
