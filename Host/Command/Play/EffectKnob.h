#pragma once

#include "SonaroHost/Playback/LiveEffects.h"

#include <cstddef>
#include <string>
#include <vector>

namespace SonaroCommand
{

// One control of an effect at a time, for keys: which one is chosen, and what it is turned to.
class EffectKnob
{
public:
	explicit EffectKnob(SonaroHost::Playback::LiveEffects& ioEffects)
		: mEffects(ioEffects)
	{
	}

	// The next control of all effects, or the one before; the first one at first.
	void Choose(bool inNext);
	// By a fiftieth of its range; of whole numbers by 1.
	void Turn(bool inUp);
	// Back to what the timeline says.
	void Release();
	// Bypasses the effect of the control, or has it heard again.
	void ToggleBypass();
	// Compressor of track "Dialogue", bypassed: Threshold -20 dB, held; what is missing where there is none.
	std::string Describe() const;

private:
	struct Choice
	{
		SonaroHost::Playback::LiveEffect mEffect;
		std::size_t mControl = 0;

		SonaroHost::LiveControl& GetControl() const { return *mEffect.mControls[mControl]; }
		std::string const& GetSymbol() const { return GetControl().GetFacts().mSymbol; }
	};

	std::vector<Choice> List() const;

	SonaroHost::Playback::LiveEffects& mEffects;
	std::size_t mIndex = 0;
	bool mIsChosen = false;
};

} // namespace SonaroCommand
