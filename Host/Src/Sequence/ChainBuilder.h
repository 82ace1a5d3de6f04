#pragma once

#include "GraphTools.h"
#include "Place.h"
#include "ShiftedParameter.h"
#include "SonaroHost/Sequence/Chain.h"

#include <cstddef>
#include <cstdint>
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
struct ChainSite
{
	Place mPlace;
	SN::AudioChannelLayout mInput;
	SN::AudioChannelLayout mOutput;
	Mixdown mMixdown;
	// Null where nothing can be sent to.
	std::vector<SendTarget> const* mTargets = nullptr;
	// Frames of the processors' time by which that is ahead of the curves' time, and how much of this passes
	// in one of those.
	std::int64_t mLead = 0;
	double mCurveScale = 1.0;
};

struct BuiltSend
{
	Processor mProcessor;
	std::size_t mSubmix = 0;
	// In frames, of the effects before it.
	std::int64_t mLatency = 0;
};

struct BuiltChain
{
	std::vector<Processor> mProcessors;
	std::vector<BuiltSend> mSends;
	Panner mPanner;
	// In frames, of all effects.
	std::int64_t mLatency = 0;
	// Whether a clone of the engine's would give the same.
	bool mIsClonable = true;
};

// The engine's processors for the stages of a chain, each one's curves delayed by the effects before it.
class ChainBuilder
{
public:
	// Both outlive this object.
	ChainBuilder(GraphTools& ioTools, ChainSite const& inSite)
		: mTools(ioTools),
		  mSite(inSite)
	{
	}

	// Once.
	BuiltChain Build(Chain const& inChain);

private:
	void Add(Fader const& inFader);
	void Add(Effect const& inEffect);
	void Add(Send const& inSend);
	void Add(Meter const& inMeter);
	// inDefault: for an empty parameter.
	Parameter Shift(Parameter const& inParameter, Parameter const& inDefault);
	// Of the next stage.
	CurveTime GetCurveTime() const;
	Panner MakePanner(SN::AudioChannelLayout const& inOutput, Parameter const& inPan);

	GraphTools& mTools;
	ChainSite const& mSite;
	BuiltChain mBuilt;
};

} // namespace SonaroHost::Sequence
