#pragma once

#include "Sonaro/IRenderableAudioComponentParam.h"
#include "Sonaro/ISonaroFactory.h"
#include "SonaroHost/Sequence/Description.h"
#include "Vexilon/ITimeTransform.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace SonaroHost::Sequence
{

using Generator = SN::InterfaceRef<SN::IAudioGenerator>;
using Processor = SN::InterfaceRef<SN::IAudioProcessor>;
using Panner = SN::InterfaceRef<SN::IAudioPanProcessor>;
using Parameter = SN::InterfaceRef<SN::IRenderableAudioComponentParam>;
using Identity = SN::InterfaceRef<SN::UnknownBase>;
using Mixdown = std::optional<SN::AudioChannelMix::MixdownType51>;

// What all parts of one graph are made with, and what they share. Throws HostErrors.
class GraphTools
{
public:
	GraphTools(SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate);

	SN::InterfaceRef<SN::IAudioRenderContext> const& GetContext() const { return mContext; }
	SN::FrameRate const& GetFrameRate() const { return mFrameRate; }
	SN::ISonaroFactory const& GetFactory() const { return *mFactory; }

	// To the nearest frame.
	std::int64_t ToFrames(SN::TickTime const& inTime) const;
	SN::TickTime ToTime(std::int64_t inFrames) const { return {inFrames, mFrameRate}; }
	// In frames; 0 while the context compensates for nothing, and below 0 for a processor that says so.
	std::int64_t GetLatency(SN::IAudioProcessor& inProcessor) const;

	// All clips of a recording read through one stream.
	Generator GetStream(Media const& inMedia);
	// The fixed conversion, the same object for equal layouts: it has no state.
	Panner GetFixedPanner(SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput,
		Mixdown const& inMixdown);
	// Of its own. inPan: the place that the sound is panned to. Throws where no panner leads.
	Panner MakePanner(SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput,
		Parameter const& inPan) const;
	SN::InterfaceRef<VX::ITimeTransform> const& GetSameTime() const { return mSameTime; }
	Parameter const& GetFullGain() const { return mFullGain; }
	Parameter const& GetNotMuted() const { return mNotMuted; }

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
	SN::InterfaceRef<SN::ISonaroFactory> mFactory;
	std::map<Media const*, Generator> mStreams;
	std::vector<FixedPanner> mFixedPanners;
	SN::InterfaceRef<VX::ITimeTransform> mSameTime;
	Parameter mFullGain;
	Parameter mNotMuted;
};

} // namespace SonaroHost::Sequence
