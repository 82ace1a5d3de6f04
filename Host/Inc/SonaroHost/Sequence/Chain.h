#pragma once

#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Automation/AutomationParameter.h"
#include "SonaroHost/Base/EffectFacts.h"
#include "SonaroHost/Base/LiveControl.h"

#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace SonaroHost::Sequence
{

using NumberParameter = SN::InterfaceRef<AutomationParameter<float>>;
using SwitchParameter = SN::InterfaceRef<AutomationParameter<bool>>;

// The stages that sound passes through, one after the other.
//
// Times  Points of curves stand in the time of what the chain belongs to: the sequence's for a track, a
//        submix or the master; for an item, time from its start on. Where effects before a stage have a
//        latency, its curves are delayed with the sound.
// Curves Every frame has the value of its own time, whatever is rendered before. Jumps, and edits while a playback
//        runs, are reached in a straight line over 5 milliseconds.
// Live   What a control or a curve of a parameter becomes while a playback runs is heard at once, on every level of
//        nesting. An export keeps to what the parameter was when its graph was made.

// A gain, linear, and a mute, which silences while it is true. Empty ones stand for 1 and for audible.
struct Fader
{
	NumberParameter mGain;
	SwitchParameter mMute;
};

// A processor that the host brings along. It works in place on the chain's layout.
struct Effect
{
	std::string mName;
	// Called for each graph and each instance of a sequence; makes a new processor each time, for blocks of up to
	// inContext->GetMaxBlockSize(). Its GetDelay is compensated; EffectHealth says what becomes of one that grows.
	std::function<SN::InterfaceRef<SN::IAudioProcessor>(
		SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
		SN::AudioChannelLayout const& inLayout)>
		mMake;
	// Whether its output depends on no more of the past than its latency, as that of a delay: then any start settles it.
	// Otherwise an effect with a history keeps its sequence from being rendered by several graphs side by side.
	bool mForgetsAfterLatency = false;
	// When parameters that the engine sets jump, in the time of the chain's curves: blocks are cut there. Without them, a jump is
	// heard at the next 64th frame. Empty for an effect that reads its curves by itself.
	std::vector<SN::TickTime> mJumps = {};
	// For reports; null for none.
	std::shared_ptr<EffectFacts const> mFacts = nullptr;
	// What a listener may move of the processors that playbacks have made, which ask for LiveControl::GetHeld in each block;
	// Playback::LiveEffects lists them.
	std::vector<std::shared_ptr<LiveControl>> mControls = {};
	// What it was made from: a JSON pointer into a file, for instance; or nothing.
	std::string mOrigin = {};
};

// Taps the sound at this place towards a submix; the sound itself goes on unchanged.
struct Send
{
	// Index of the submix.
	std::size_t mSubmix = 0;
	Fader mLevel;
	// The pan from 0 (left) through 0.5 to 1 (right), where the submix's layout can be panned to; empty for none.
	NumberParameter mPan;
};

// Hears the sound at its place of a chain, which goes on unchanged.
struct Meter
{
	// Shared by all instances of a nested sequence that has one.
	SN::InterfaceRef<SN::IAudioMeterSetter> mSetter;
};

using Stage = std::variant<Fader, Effect, Send, Meter>;

// What sound passes through, on an item, a track, a submix or the master.
struct Chain
{
	// In the order of the sound.
	std::vector<Stage> mStages;
	// The pan after all stages, where the layout becomes that of the destination; empty for the fixed conversion.
	NumberParameter mPan;
};

} // namespace SonaroHost::Sequence
