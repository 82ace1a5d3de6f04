#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "AudioRender/Core/GeneratorWithInputs.h"
#include "AudioRender/Track/ProcessorChain.h"
#include "Sonaro/IAudioResampler.h"
#include "Sonaro/TrackSettings.h"
#include "Vexilon/ITimeTransform.h"

#include <memory>

namespace SN
{

// A clip on a track: a generator with processors and a pan processor of its own, and, at any speed but 1, a resampler
// after them.
//
// Time      The item's own. It is shifted by the offset, mapped by the transform and multiplied by the speed
//           to give the source's time, in which processors and parameters run.
// Position  With a resampler the source is read on without a gap, and follows the mapped time only where
//           the two are more than 16 samples apart.
// Latency   What processors and source need ahead is reported as delay, and made up for by rendering ahead
//           and throwing away, in FillInitialDelay.
// Threads   One at a time.
class RealtimeAudioClipTrackItemRenderer final : public Implements<RealtimeAudioClipTrackItemRenderer,
													 LiveGeneratorWithInputs, AudioTrackRenderableItemMixin>,
												 public AudioRenderContextClient
{
public:
	int InitFrom(RealtimeAudioClipTrackItemSettings const& inSettings);

	InterfaceRef<IAudioGenerator> Clone() override;
	TickTime GetDelay() SONARO_NONBLOCKING override
	{
		return IsDelayCompensationDisabled() ? kTimeZero : mDelay;
	}
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;
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

	std::u16string GetNodeName() override { return u"RealtimeAudioClipTrackItemRenderer"; }

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override;

private:
	// The resampler and all memory.
	void ReserveScratch();

	TickTime ShiftTime(TickTime const& inTime) const;
	void RenderStraight(TickTime const& inSourceTime, dsp::AudioBuffer& ioBuffer, bool inReverse);
	void RenderResampled(TickTime const& inSourceTime, dsp::AudioBuffer& ioBuffer, bool inReverse);
	// Reads so many samples from mSourcePosition on into ioBuffer, in playing order, and moves the
	// position. Returns the lowest time of what was read.
	TickTime ReadSource(dsp::AudioBuffer& ioBuffer, unsigned inCount, bool inReverse);
	// ioWindow: aimed at what the source gave.
	void RunChain(
		dsp::AudioSubBuffer& ioWindow, dsp::AudioBuffer* outPan, TickTime const& inTime, bool inReverse);
	TickTime GetSourceDelay() const;
	void WarmUp(TickTime const& inStartTime);
	void PrepareToDiscard(long long inFrames);
	void Discard(unsigned inFrames, bool inReverse, bool inPrefetch);
	bool PanAlters() const { return !mChain.GetPanProcessor()->DoesNotAlterAudio(); }
	long long GetDelayInFrames() { return GetDelay().ToFrame64(GetFrameRate()); }

	InterfaceRef<IAudioGenerator> mSource;
	ProcessorChain mChain;
	double mSpeed = 1.0;
	bool mUsesResampler = false;
	InterfaceRef<VX::ITimeTransform> mTimeTransform;
	TickTime mTimeOffset;
	bool mPrerolled = false;
	// Where the source was read last: the end of it forward, its start in reverse.
	TickTime mSourcePosition = -kTimeMax;
	// Empty at speed 1.
	InterfaceRef<IAudioResampler> mResampler;
	// Where filling the delay goes on, and the frames that it has done.
	TickTime mFillPosition;
	long long mFramesFilled = 0;
	TickTime mDelay;
	unsigned mWidth = 0;
	// Takes what filling renders; made when there is something to fill.
	std::unique_ptr<dsp::AudioBuffer> mDiscarded;
};

} // namespace SN
