#pragma once

#include "Level.h"
#include "PlainStage.h"
#include "Playhead.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/ICachedAudioGenerator.h"
#include "SonaroHost/Sequence/Description.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/GainRamp.h"

#include <cstdint>

namespace SonaroHost::Sequence
{

// Taps a chain's sound towards a submix and leaves it alone: panned, at its level, and muted with its track, whose
// own mute comes after all stages. The submix's inlet finds the copy here.
class SendStage final
	: public SN::Implements<SendStage, PlainStage, SN::ICachedAudioGenerator, SN::ILiveAudioParameterOwner>
{
public:
	struct Settings
	{
		Level mLevel;
		StageClock mClock;
		SN::InterfaceRef<SN::IAudioPanProcessor> mPanner;
		// Empty for none.
		MuteSwitch mMute;
		unsigned mMaxBlockSize = 0;
	};

	explicit SendStage(Settings const& inSettings);

	SN::InterfaceRef<SN::IAudioProcessor> Clone(
		SN::FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) override;
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime) SONARO_NONBLOCKING override;
	void Preroll(SN::TickTime const& inTime, bool inReverse) override;

	void GenerateAudio(unsigned, SN::TickTime const&, bool) SONARO_NONBLOCKING override {}
	void MixCachedAudio(dsp::AudioBuffer& ioBuffer) SONARO_NONBLOCKING override;
	void CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) override;

	std::u16string GetNodeName() override { return u"SendStage"; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetProcessorNodes() override
	{
		return {mSettings.mPanner};
	}

private:
	bool IsMuted() const { return mSettings.mMute && mSettings.mMute->Get() != 0; }

	Settings mSettings;
	// What was sent of the request so far.
	dsp::AudioBuffer mSent;
	std::uint64_t mRequest = 0;
	unsigned mFrames = 0;
	dsp::GainRamp mMuteRamp;
};

} // namespace SonaroHost::Sequence
