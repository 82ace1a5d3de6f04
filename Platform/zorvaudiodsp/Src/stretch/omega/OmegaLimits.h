#pragma once

namespace dsp::stretch::omega
{

// How far ratio and pitch of an engine may go.
struct OmegaLimits
{
	float mMinRatio = 1.0f;
	float mMaxRatio = 1.0f;
	float mMinSemitones = 0.0f;
	float mMaxSemitones = 0.0f;
};

} // namespace dsp::stretch::omega
