#include "Time/Resampler/AudioResampler1to2Specialized.h"

namespace SN
{

namespace
{

constexpr std::array<float, 10> kHalfway{0.0023667177f, -0.015379166f, 0.054600246f, -0.1572644f, 0.6101129f,
	0.6101129f, -0.1572644f, 0.054600246f, -0.015379166f, 0.0023667177f};

} // namespace

AudioResampler1to2Specialized::AudioResampler1to2Specialized()
	: SpecializedResampler({.mParts = 2,
		  .mStep = 1,
		  .mOutputLatency = 20,
		  .mPhases = {&Filter<2, 1, kOnSample>, &Filter<2, 1, kHalfway>, nullptr}})
{
}

} // namespace SN
