#include "SonaroHost/Binaural/Ears.h"

#include <utility>

namespace SonaroHost
{

namespace
{

constexpr dsp::ambi::FieldGains kComponents[Ears::kNumComponents] = {
	{1.0f, 0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 0.0f, 1.0f}};

} // namespace

Ears::Ears(std::string inName, unsigned inSampleRate, unsigned inNumTaps, Taps inTaps)
	: mName(std::move(inName)),
	  mSet{inSampleRate, inNumTaps},
	  mTaps(std::move(inTaps)),
	  mDescriptor{kNumComponents, kComponents, 1, &mSet}
{
}

} // namespace SonaroHost
