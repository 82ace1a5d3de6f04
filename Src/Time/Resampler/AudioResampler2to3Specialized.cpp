#include "Time/Resampler/AudioResampler2to3Specialized.h"

namespace SN
{

namespace
{

constexpr std::array<float, 10> kFirstThird{0.0030268815f, -0.01690132f, 0.056786474f, -0.16295487f,
	0.8065488f, 0.38666168f, -0.11434115f, 0.039143216f, -0.010339182f, 0.001311488f};
// Its mirror image.
constexpr std::array<float, 10> kSecondThird{0.001311488f, -0.010339182f, 0.039143216f, -0.11434115f,
	0.38666168f, 0.8065488f, -0.16295487f, 0.056786474f, -0.01690132f, 0.0030268815f};

} // namespace

AudioResampler2to3Specialized::AudioResampler2to3Specialized()
	: SpecializedResampler({.mParts = 3,
		  .mStep = 2,
		  .mOutputLatency = 15,
		  .mPhases = {&Filter<3, 2, kOnSample>, &Filter<3, 2, kFirstThird>, &Filter<3, 2, kSecondThird>}})
{
}

} // namespace SN
