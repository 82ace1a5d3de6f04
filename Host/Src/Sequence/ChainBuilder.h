#pragma once

#include "Sequence/Node/GraphTools.h"
#include "Sequence/Node/Place.h"
#include "Sequence/Stage/LeftGain.h"
#include "Sequence/Stage/Level.h"
#include "Sequence/Stage/Playhead.h"
#include "SonaroHost/Binaural/Listener.h"
#include "SonaroHost/Sequence/Chain.h"
#include "SonaroHost/Sequence/Description.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace SonaroHost::Sequence
{

// A submix, to a chain that sends to it.
struct SendTarget
{
	SN::AudioChannelLayout mLayout;
	Identity mIdentity;
};

// Where a chain stands.
struct ChainContext
{
	Place mPlace;
	SN::AudioChannelLayout mInput;
	SN::AudioChannelLayout mOutput;
	Mixdown mMixdown;
	// Null where nothing can be sent to.
	std::vector<SendTarget> const* mTargets = nullptr;
	ChainTime mTime;
	// The track's mute, which its sends follow.
	MuteSwitch mMute = {};
	// Hears what leaves the last stage; null for nobody.
	SN::InterfaceRef<SN::IAudioMeterSetter> mTap = {};
	// Nobody hears an effect that is late while nothing is compensated for, as on an item.
	bool mDropsLateEffects = false;
	// Who listens to what comes out, which is then stereo; null for nobody.
	Listener const* mListener = nullptr;
};

struct BuiltSend
{
	Processor mProcessor;
	std::size_t mSubmix = 0;
	// The latency of the effects before it, in frames.
	std::int64_t mLatency = 0;
};

struct BuiltChain
{
	std::vector<Processor> mProcessors;
	std::vector<BuiltSend> mSends;
	Panner mPanner;
	// The latency of all effects, in frames.
	std::int64_t mLatency = 0;
};

// The processors for the stages of a chain, each one's curves delayed by the effects before it.
class ChainBuilder
{
public:
	// Both outlive this object.
	ChainBuilder(GraphTools& ioTools, ChainContext const& inContext)
		: mTools(ioTools),
		  mContext(inContext)
	{
	}

	// Called once.
	BuiltChain Build(Chain const& inChain);

private:
	void Add(Fader const& inFader);
	void Add(Effect const& inEffect);
	void Add(Send const& inSend);
	void Add(Meter const& inMeter);
	Processor MakeEffect(Effect const& inEffect) const;
	// The clock of the next stage.
	StageClock MakeClock() const { return {mContext.mTime, mBuilt.mLatency}; }
	// A number in an export where a parameter has no curve: nothing moves it there.
	template <class T>
	ParameterFollower<T> Follow(
		SN::InterfaceRef<AutomationParameter<T>> const& inParameter, float inDefault) const;
	Level MakeLevel(Fader const& inFader) const;
	Panner MakeEars(Listener const& inListener) const;
	Panner MakePanner(SN::AudioChannelLayout const& inOutput, NumberParameter const& inPan,
		std::shared_ptr<LeftGain> const& inLeftGain);

	GraphTools& mTools;
	ChainContext const& mContext;
	BuiltChain mBuilt;
	// Set while the last stage before a pan is made, for a fader.
	std::shared_ptr<LeftGain> mLeftGain;
};

} // namespace SonaroHost::Sequence
