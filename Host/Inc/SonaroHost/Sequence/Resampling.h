#pragma once

namespace SonaroHost::Sequence
{

// How content of another rate or speed becomes samples of a sequence.
enum class Resampling
{
	// By exact positions, noise and aliases below -140 dB; see RateConverter.
	kExact,
	// The same at -100 dB, in less time.
	kDraft,
	// By the engine's item, which interpolates, starts at whole samples and may be off by up to 16 samples where
	// blocks and starts differ.
	kEngine,
};

} // namespace SonaroHost::Sequence
