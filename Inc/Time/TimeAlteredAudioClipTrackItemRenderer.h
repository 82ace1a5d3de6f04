#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "AudioRender/Core/GeneratorWithInputs.h"
#include "AudioRender/Track/ProcessorChain.h"
#include "Sonaro/IAudioResampler.h"
#include "Sonaro/IAudioTimeScalerFactory.h"
#include "Sonaro/TrackSettings.h"

namespace SN
{

// A clip on a track at another speed, forward or backward, with or without its pitch: a generator, whose audio runs
// through processors and a pan processor at the clip's own rate, and after them a resampler, a time scaler, or both.
//
// Time      Read on from the item's beginning without regard to the times of the requests: only a first request before
//           time 0 moves the media. To start elsewhere, play from the beginning and throw away, or make the item anew
//           with its content moved.
// Reverse   The item's own direction turns what is read end for end, so that resampler and scaler always run forward.
// Latency   That of the generator; the lead that the scaler reads is not counted.
// Reading   From the generator directly: the item asks for nothing ahead of time.
// Threads   One at a time.
class TimeAlteredAudioClipTrackItemRenderer final : public Implements<TimeAlteredAudioClipTrackItemRenderer,
														GeneratorWithInputs, AudioTrackRenderableItemMixin>,
													public AudioRenderContextClient
{
public:
	// Raises the null-pointer exception when pitch is to be kept and there is no factory of time scalers.
	int InitFrom(TimeAlteredAudioClipTrackItemSettings const& inSettings);

	InterfaceRef<IAudioGenerator> Clone() override;
	bool HasHistory() override { return true; }
	TickTime GetDelay() SONARO_NONBLOCKING override
	{
		return IsDelayCompensationDisabled() ? kTimeZero : mGenerator->GetDelay();
	}
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const&, PrefetchType, PrefetchRequestAccumulator&) override
	{
	}
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;
	// Back to the item's beginning.
	void Reset() override;

	unsigned GetNumChannels() SONARO_NONBLOCKING override
	{
		return mChain.GetPanProcessor()->GetNumOutputChannels();
	}
	AudioChannelLayout GetAudioChannelLayout() override
	{
		return mChain.GetPanProcessor()->GetOutputAudioChannelLayout();
	}
	FrameRate GetGeneratorFrameRate() override { return GetFrameRate(); }

	std::u16string GetNodeName() override { return u"TimeAlteredAudioClipTrackItemRenderer"; }

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override;

private:
	// Resampler, scaler and all memory, of what InitFrom has stored.
	void MakeConverters();
	void InitConverters();
	void InitResampler(IAudioResampler& ioResampler) const;
	void ReserveScratch();
	// The most samples that the scaler may want for one block, and the most that are read for those.
	unsigned GetMaxScalerInput() const;
	unsigned GetMaxFetch() const;

	void ReadSource(dsp::AudioBuffer& outSource, unsigned inCount);
	// Reads so many samples from a position of the media on, in pieces, into outSource from a sample of it on.
	void ReadPieces(dsp::AudioBuffer& outSource, unsigned inOffset, TickTime inPosition);
	void RunChain(dsp::AudioBuffer& ioSource, dsp::AudioBuffer* outPan, bool inReverse);
	void Convert(dsp::AudioBuffer& ioChained, dsp::AudioBuffer& outBuffer, unsigned inScaled);
	// By so many samples that were read.
	void MovePositions(long long inFetched);

	InterfaceRef<IAudioGenerator> mGenerator;
	ProcessorChain mChain;
	// Samples of the source for each sample of the item, and what of it the resampler makes up where there is a
	// scaler.
	double mSpeed = 1.0;
	double mScalerSpeed = 1.0;
	double mRelativeSpeed = 1.0;
	bool mMaintainPitch = false;
	bool mReverse = false;
	bool mResampleBeforeScaling = false;
	RenderQuality mQuality = RenderQuality::kHigh;
	TickTime mTimeOffset;
	TickTime mSecondTimeOffset;
	TickTime mItemStartTime;
	TickTime mItemEndTime;
	// In samples of the source at the render's rate.
	TickTime mSourcePosition;
	// The same in the clip's time, by which parameters are sampled.
	TickTime mClipPosition;
	// Set once, by the first request before time 0.
	TickTime mMediaOffset;
	// Empty where only the scaler works.
	InterfaceRef<IAudioResampler> mResampler;
	// Empty where pitch follows.
	InterfaceRef<IAudioTimeScaler> mTimeScaler;
	dsp::AudioBuffer mScalerInput;
	// One sample of the source in the clip's time.
	FrameRate mContentFrameRate;
};

} // namespace SN
