#pragma once

#include "SonaroHost/Engine/EngineFactory.h"
#include "SonaroHost/Sequence/Description.h"
#include "SonaroHost/Sequence/EffectHealth.h"
#include "SonaroHost/Sequence/NodeLabels.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace SonaroHost::Sequence
{

using Generator = SN::InterfaceRef<SN::IAudioGenerator>;
using Processor = SN::InterfaceRef<SN::IAudioProcessor>;
using Panner = SN::InterfaceRef<SN::IAudioPanProcessor>;
using Identity = SN::InterfaceRef<SN::UnknownBase>;
using Mixdown = std::optional<SN::AudioChannelMix::MixdownType51>;

// What all parts of one graph are made with, and what they share. Throws HostErrors.
class GraphTools
{
public:
	// inLabels: null where nobody wants them.
	GraphTools(SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
		std::shared_ptr<NodeLabels> const& inLabels = nullptr);

	SN::InterfaceRef<SN::IAudioRenderContext> const& GetContext() const { return mContext; }
	SN::FrameRate const& GetFrameRate() const { return mFrameRate; }
	EngineFactory const& GetFactory() const { return mFactory; }

	// Rounds to the nearest frame.
	std::int64_t ToFrames(SN::TickTime const& inTime) const;
	SN::TickTime ToTime(std::int64_t inFrames) const { return {inFrames, mFrameRate}; }
	// The latency in frames; 0 while the context compensates for nothing, and below 0 for a processor that says so.
	std::int64_t GetLatency(SN::IAudioProcessor& inProcessor) const;

	// All clips of a recording read through one stream.
	Generator GetStream(Media const& inMedia);
	// The fixed conversion, the same object for equal layouts: it has no state.
	Panner GetFixedPanner(SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput,
		Mixdown const& inMixdown);
	// The uses of scratch memory for what is read within a block, of so many channels and a block's frames. On one
	// level of nesting nobody reads two things for the same use at once, so all that have as many channels share one.
	enum class ScratchUse
	{
		kItem,
		kConversion,
		kFade,
		kSettling,
		kAngle,
	};
	std::shared_ptr<dsp::AudioBuffer> GetScratch(ScratchUse inUse, std::size_t inChannels);
	// Whether parameters may move while the graph is rendered, as in a playback.
	bool IsLive() const { return mContext->IsPrefetchEnabled(); }
	// The parameter itself where it is live; else one that stays as this one is now. Empty for an empty one.
	template <class T>
	SN::InterfaceRef<AutomationParameter<T>> GetHeard(
		SN::InterfaceRef<AutomationParameter<T>> const& inParameter) const
	{
		return inParameter && !IsLive() ? inParameter->Detach() : inParameter;
	}
	// A track's mute, or what switches angles: live where the engine has it so, in the outermost sequence of a playback.
	MuteSwitch GetHeard(MuteSwitch const& inMute) const;

	// For drawings of the graph.
	void Label(Identity const& inNode, NodeLabel const& inLabel) const
	{
		if (mLabels)
		{
			mLabels->Add(inNode, inLabel);
		}
	}
	// Notes what wants one run; the first one counts. See GraphReport::mWhyInOneRun.
	void NoteOneRun(std::string const& inWhat);
	// The same for sound that depends on more of the past than a start settles.
	void NoteHistory(std::string const& inWhat);
	std::string const& GetWhyInOneRun() const { return mWhyInOneRun; }
	// How many sounds that do were noted until now.
	std::size_t CountHistories() const { return mHistories; }
	void NoteEffect(std::shared_ptr<EffectHealth const> inEffect) { mEffects.push_back(std::move(inEffect)); }
	std::vector<std::shared_ptr<EffectHealth const>> const& GetEffects() const { return mEffects; }

	static Identity MakeIdentity();

private:
	struct FixedPanner
	{
		SN::AudioChannelLayout mInput;
		SN::AudioChannelLayout mOutput;
		Mixdown mMixdown;
		Panner mPanner;
	};

	Panner MakeFixedPanner(SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput,
		Mixdown const& inMixdown) const;

	SN::InterfaceRef<SN::IAudioRenderContext> mContext;
	SN::FrameRate mFrameRate;
	std::shared_ptr<NodeLabels> mLabels;
	EngineFactory mFactory;
	std::map<Media const*, Generator> mStreams;
	std::vector<FixedPanner> mFixedPanners;
	std::string mWhyInOneRun;
	std::size_t mHistories = 0;
	std::vector<std::shared_ptr<EffectHealth const>> mEffects;
	// The scratch memory by use, level and channels.
	std::map<std::tuple<ScratchUse, unsigned, std::size_t>, std::shared_ptr<dsp::AudioBuffer>> mScratch;
};

} // namespace SonaroHost::Sequence
