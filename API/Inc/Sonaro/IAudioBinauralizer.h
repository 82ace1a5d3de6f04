#pragma once

#include "Sonaro/AudioChannelMix.h"
#include "Sonaro/Types.h"

#include <string>

namespace SN
{

// Plays ambisonic sound of the first order, in the order ACN (W, Y, Z, X) and with the scale SN3D, to two ears, and
// their sound to other layouts. It stands beside the graph: the host feeds it.
//
// Calls        Init, GetProcessFunction and SetBypass(false), then for each block the process function or Process.
// Bypass       From the start until the host ends it. The input is then mixed into the output by channel counts.
// Silence      Silent input gives silent output. Input of which some of the first four channels are flagged silent is
//              no sound field, and is mixed as in bypass.
// Orientation  A change is spread over the next block. What the three angles mean stands at dsp::ambi::EulerAngle.
// Memory       Process allocates nothing.
// Threads      Orientation and bypass on any thread at any time; each value is taken over by itself, so that one
//              block may have a part of a new orientation. All else on one thread at a time.
class SONARO_API IAudioBinauralizer : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioBinauralizer> kIdentifier{0x6d1f8c2be4704a95ull, 0xb7e2903c5fa81d46ull};

	~IAudioBinauralizer() override = default;

	// inSampleRate: in hertz. inMaxFrames: the largest block. Makes the renderer and loads its responses; with the
	// same values as before nothing happens, and what was heard goes on. The channels of GetProcessFunction stay as
	// they were, with room for the former largest block.
	virtual void Init(unsigned long long inSampleRate, unsigned inMaxFrames) = 0;
	// Forgets what was heard. Without Init nothing happens.
	virtual void Reset() = 0;

	// Where the listener's head is turned, in degrees: up, to the left, and right ear down.
	virtual void SetOrientation(float const& inPitch, float const& inYaw, float const& inRoll) = 0;
	virtual void GetOrientation(float& outPitch, float& outYaw, float& outRoll) = 0;

	// Whose ears: the default ones for an empty name, as at the start. For any other name those stay that are loaded,
	// as there are no others. Loading anew forgets what was heard.
	virtual void SetHRIRName(std::string const& inName) = 0;
	virtual std::string GetHRIRName() = 0;

	// Prepares Process for so many channels. The result calls Process and keeps this object alive.
	virtual AudioChannelMix::MixFunction GetProcessFunction(
		unsigned long long inInputChannels, unsigned inOutputChannels) = 0;
	// Renders the smaller UseSize of both; the rest of the output is zeros. Throws std::bad_function_call where the
	// input is to be mixed and GetProcessFunction was not called. Without Init the output is left alone.
	virtual void Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING = 0;

	virtual void SetBypass(bool inBypass) = 0;
	virtual bool GetBypass() = 0;

	// A reference to this object.
	virtual InterfaceRef<IAudioBinauralizer> GetSharedFromThis() = 0;
};

} // namespace SN
