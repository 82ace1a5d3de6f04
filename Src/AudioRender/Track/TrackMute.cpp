#include "AudioRender/Track/TrackMute.h"

namespace SN
{

namespace
{

// The length of a fade until the first preroll.
constexpr float kMuteRampSeconds = 0.005f;
constexpr float kMuteRampSecondsAfterPreroll = 0.01f;

} // namespace

TrackMute::TrackMute()
	: mFlag(std::make_shared<Flag>(0)),
	  mRamp(FrameRate(), 1.0f, kMuteRampSeconds)
{
}

void TrackMute::Init(
	IAudioRenderContext& inContext, std::shared_ptr<Flag> const& inFlag, FrameRate const& inFrameRate)
{
	bool const isLive = inFlag && !inContext.IsNotTopLevelPlayback();
	mFlag = isLive ? inFlag : std::make_shared<Flag>(inFlag ? inFlag->Get() : 0);
	mRamp = dsp::GainRamp(inFrameRate, 1.0f, kMuteRampSeconds);
}

void TrackMute::CloneFrom(TrackMute const& inOther, FrameRate const& inFrameRate)
{
	mFlag = std::make_shared<Flag>(inOther.mFlag->Get());
	mRamp = dsp::GainRamp(inFrameRate, 1.0f, kMuteRampSeconds);
}

void TrackMute::StartOver(FrameRate const& inFrameRate)
{
	mRamp = dsp::GainRamp(inFrameRate, GetGain(), kMuteRampSecondsAfterPreroll);
}

} // namespace SN
