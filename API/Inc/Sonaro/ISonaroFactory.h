#pragma once

#include "Sonaro/DelayDependency.h"
#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/IAudioSource.h"
#include "Sonaro/IAudioTrackRenderableItem.h"
#include "Sonaro/IOfflineAudioProcessor.h"
#include "Sonaro/PanProcessorType.h"
#include "Sonaro/Prefetcher.h"
#include "Sonaro/Types.h"
#include "zorvcore/threads/AtomicIntegral.h"

#include <deque>
#include <map>
#include <memory>
#include <vector>

namespace VX
{
class BinaryData;
class ITimeTransform;
} // namespace VX

namespace SN
{

class AudioTransitionParameters;
class IAudioFilter;
class IAudioMeterSetter;
class IAudioTransition;
class IRenderableAudioComponentParam;

// The maker of every node. GraphFactory offers the same creators with structs of defaults for the many
// arguments, and with the new object as what they return.
//
// Results  0 or above for success; a negative code of ResultCodes.h otherwise, and the last argument is
//          then left as it was. eNullPointer: no context. eInvalidArgument: an invalid frame rate or
//          another argument out of its range.
// Threads  On the thread that owns the context.
class SONARO_API ISonaroFactory : public virtual Unknown
{
public:
	static constexpr Identifier<ISonaroFactory> kIdentifier{0x3c16105fb4f1a9abull, 0xa19554b3346c4e9bull};

	// A context for one render. eNullPointer with prefetch on and no prefetcher; eInvalidArgument when
	// the range start is below -kTimeMax or its end above kTimeMax.
	virtual int CreateAudioRenderContext(unsigned inMaxBlockSize, bool inPrefetchEnabled,
		bool inContextOption, TickTime const& inRangeStart, TickTime const& inRangeEnd,
		unsigned inControlInterval, TickTime const& inMeterInterval, Prefetcher* inPrefetcher,
		ImmutableString const& inRenderName, bool inFaderParamFlag, bool inPannerParamFlag,
		bool inFilterParamFlag, bool inSendParamFlag, RenderQuality inRenderQuality,
		InterfaceRef<IAudioRenderContext>* outContext) const = 0;

	// A leaf that reads a source: channel inChannelIndex of it, or all for -1. Under a key the stream is
	// shared within the context: a second request for the key gives the same node, whatever channel it names.
	// inStreamSpeed is kept and has no effect.
	virtual int CreateAudioStreamRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioSource> inSource, int inChannelIndex,
		double inStreamSpeed, InterfaceRef<UnknownBase> inKey,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// The same without a key; inData is not looked at.
	virtual int CreateNordekAudioStreamRenderer(InterfaceRef<IAudioRenderContext>& inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioSource> const& inSource, int inChannelIndex,
		double inStreamSpeed, VX::BinaryData const& inData,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// Media on the time line of a clip: time is multiplied by the ratio of inMediaFrameRate to inFrameRate, in
	// samples a second, and with inHasOffset moved by inOffset. inContentEnd: where the media ends. Under a key
	// the node is shared within the context for equal rates. The null-pointer exception without a generator.
	virtual int CreateAudioContentRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, FrameRate const& inMediaFrameRate,
		InterfaceRef<IAudioGenerator> const& inGenerator, bool inHasOffset, TickTime const& inOffset,
		TickTime const& inContentEnd, InterfaceRef<UnknownBase> inKey,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// The same over one generator for each angle of a multicam clip. inSelectedCamera: the index of the angle
	// that is heard, which the host of a playback at the top level may change at any time, on any thread; elsewhere
	// the present one stays. eNullPointer without it; the null-pointer exception without a context or an angle.
	virtual int CreateAudioContentMulticamRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, FrameRate const& inMediaFrameRate,
		std::vector<InterfaceRef<IAudioGenerator>> const& inCameras,
		std::shared_ptr<zorvcore::threads::AtomicIntegral<int, 0>> inSelectedCamera, bool inHasOffset,
		TickTime const& inOffset, TickTime const& inContentEnd,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// One clip out of generators, each with the map of its channels: a fixed gain, and time shifted by
	// inStartOffset, which counts in the sequence and is scaled by inSpeed, or else by the ratio of the
	// generators' rate to inFrameRate.
	virtual int CreateAudioClipRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate,
		std::map<InterfaceRef<IAudioGenerator>, AudioChannelMap> const& inGenerators,
		AudioChannelLayout const& inChannelLayout, TickTime const& inStartOffset, float inGain,
		double inSpeed, InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// A context of its own for background work: like the source's, without prefetch, with empty maps
	// and all flags of the run off. A null source raises the null-pointer exception.
	virtual int CreateAudioRenderContextForPrefetchThread(
		InterfaceRef<IAudioRenderContext> inSource, InterfaceRef<IAudioRenderContext>& outContext) const = 0;

	// A generator that plays another one along a curve of time against time, keeping its pitch with
	// inMaintainPitch, and renders ahead on a thread of its own in inPrefetchContext. inSpeed: the source's own
	// speed, which is undone first. inSourceOffset is added to times that go in; the source ends at
	// inSourceEndTime and the result at inEndTime. Speeds from a tenth to ten times are reached; beyond, the source
	// lags and catches up later. eNullPointer without either context; eInvalidArgument for an invalid rate or a
	// generator without channels; the null-pointer exception without a transform.
	virtual int CreateTimeStretchedAudioGenerator(InterfaceRef<IAudioGenerator> const& inGenerator,
		FrameRate const& inFrameRate, double inSpeed, InterfaceRef<IAudioRenderContext> inPrefetchContext,
		InterfaceRef<IAudioRenderContext> inRenderContext, InterfaceRef<VX::ITimeTransform> inTimeTransform,
		bool inMaintainPitch, TickTime const& inSourceEndTime, TickTime const& inSourceOffset,
		TickTime const& inEndTime, bool inPreferAccuracy,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// Two generators, each asked for the time multiplied by its scale, joined by one processor: it works on the
	// channels of the first, followed by as many of the second, and leaves its result in the lower half. An item
	// of a track. Throws a zorv_exception when a generator or the processor is empty.
	virtual int CreateAudioMixRenderer(InterfaceRef<IAudioRenderContext> const& inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator> const& inFirst, double inFirstTimeScale,
		InterfaceRef<IAudioGenerator> const& inSecond, double inSecondTimeScale,
		InterfaceRef<IAudioProcessor> const& inProcessor,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// An item of a track: a source with processors and a pan processor, which is required, of its own. Its
	// time is shifted by inTimeOffset, by which the processors delay, mapped by the transform and multiplied
	// by the speed, with a resampler behind the processors at any speed but 1. A delay of the source that would
	// take longer than a minute at a low speed counts as none. Give it its place on the track by
	// IAudioTrackRenderableItem::Init. eInvalidArgument for a speed that is not a number.
	// In reverse the offset is added, too: an item with late processors then stands twice their delay beside its
	// place. Who plays in both directions gives no offset and lets the source make up for the delay.
	virtual int CreateRealtimeAudioClipTrackItemRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator> const& inSource,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanProcessor, double inSpeed,
		InterfaceRef<VX::ITimeTransform> inTimeTransform, TickTime const& inTimeOffset,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// An item of a track that plays its generator at another speed, forward or with inReverse backward, and
	// with inMaintainPitch at the pitch that it has at inScalerSpeed times the normal speed. Its processors and
	// its pan processor run at the clip's own time. It plays from its beginning on, whatever the times it is asked for;
	// Reset goes back there. See TimeAlteredAudioClipTrackItemSettings for the arguments. eInvalidArgument when
	// inSpeed / inScalerSpeed is not a finite number; the null-pointer exception without a pan processor, and
	// with inMaintainPitch without a factory of time scalers.
	virtual int CreateTimeAlteredAudioClipTrackItemRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator> const& inGenerator,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanner, double inSpeed, bool inReverse, bool inMaintainPitch,
		InterfaceRef<VX::ITimeTransform> inTimeTransform, TickTime const& inTimeOffset,
		TickTime const& inSecondTimeOffset, double inScalerSpeed, TickTime const& inItemStartTime,
		TickTime const& inItemEndTime, InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// An item of a track: two generators mixed sample by sample with the gains of inTransition. Its time t is the
	// clips' t + inTransitionStartTime - the start of the clip; the progress goes from 0 to 1 over the duration.
	virtual int CreateAudioTransitionRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioTransition> inTransition,
		AudioTransitionParameters const& inParameters,
		InterfaceRef<IAudioGenerator> const& inOutgoingGenerator,
		InterfaceRef<IAudioGenerator> const& inIncomingGenerator, TickTime const& inOutgoingStartTime,
		TickTime const& inIncomingStartTime, TickTime const& inTransitionStartTime,
		TickTime const& inTransitionDuration, InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// A track of items, sorted and flush, framed by a leading and a trailing one: exactly two items count as
	// none. inOwner: the host's object of the track, by which others find it in the context; may be empty.
	// inMute: not 0 while muted, live in a playback at the top level; null for never. inPanProcessor: to the
	// layout of what the track feeds; empty for none. inChannels: of the track itself. A track that is never
	// heard becomes a silent generator, unless a send taps it.
	virtual int CreateAudioClipTrackRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, AudioTrackRenderableItemList const& inItems,
		InterfaceRef<UnknownBase> inOwner, std::shared_ptr<zorvcore::threads::AtomicIntegral<int>> inMute,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanProcessor, AudioChannelLayout const& inChannels,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// The track of a submix or of the master over a source, mostly an inlet. The rest as for a track of items.
	virtual int CreateAudioMixTrackRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator> const& inSource,
		InterfaceRef<UnknownBase> inOwner, std::shared_ptr<zorvcore::threads::AtomicIntegral<int>> inMute,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanProcessor, AudioChannelLayout const& inChannels,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// The sum of inputs: of tracks and sends what they hold of the block that the group has rendered, of other
	// generators what they give.
	virtual int CreateAudioTrackInletRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, std::vector<InterfaceRef<UnknownBase>> const& inInputs,
		AudioChannelLayout const& inChannels, InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// The tracks of a sequence, each before those that it feeds; the last one is the output. inDelayDependencies:
	// for each track, by their mDelay, how many samples each of its sends waits, in their order, and last its
	// output, below 2^31; without a record, not at all. A send's wait is not kept in control blocks, which is
	// while a control of its track changes. inGeneratorDelays: how far ahead of the sequence's time each track is
	// asked, forward later and in reverse earlier; without one, 0. inOwner: the host's object of the sequence.
	virtual int CreateAudioTrackGroupRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, std::vector<InterfaceRef<IAudioGenerator>> const& inGenerators,
		std::deque<std::vector<DelayDependency>> const& inDelayDependencies,
		std::vector<TickTime> const& inGeneratorDelays, AudioChannelLayout const& inChannels,
		InterfaceRef<UnknownBase> inOwner, InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// A further instance of the group that was made under this owner at the same nesting depth: the group itself
	// where it has no history, else a clone, and silence beyond the limit of instances. -1 where there is none.
	virtual int CreateAudioTrackGroupRendererViaCloning(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<UnknownBase> inOwner,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// A panner of a type. Controls: the pan (0 left, 0.5 middle, 1 right) for those to stereo and the
	// balances; X, Y (0 front, 1 rear), the share of the centre and the gain of the low frequency channel
	// for those to 5.1; none for the others. eFailure for another count of controls where one is named:
	// stereo to stereo and mono to stereo 1, stereo to 5.1 4. eInvalidArgument for a type that is not
	// made here. The folds from 5.1 keep AudioChannelMix's mixdown of the moment. inActionFlag: reported with
	// each of the controls by ILiveAudioParameterOwner; its meaning is the host's.
	virtual int CreateAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, PanProcessorType inType, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const = 0;

	// A panner that routes: kPanMonoTo51 (four controls without effect, or eFailure), kPanMonoToAdaptive
	// and kPanStereoToAdaptive (the pan) and kPan51ToAdaptive (no controls), the last three to
	// inOutputChannels channels, 64 at most. eInvalidArgument for any other type, and for more channels.
	virtual int CreateDirectAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, PanProcessorType inType, int inOutputChannels,
		AudioChannelMatrix const& inMatrix, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const = 0;

	// A panner that copies channels between any two layouts: by the routing, when that has an entry for
	// each channel of the smaller layout, else by position.
	virtual int CreateDefaultMultiChannelAudioPanProcessorRenderer(
		InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		AudioChannelMatrix const& inMatrix, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const = 0;

	// A fixed matrix of linear gains: a row for each input channel, with a gain for each output channel.
	// eInvalidArgument for more than eight channels on a side, and for rows that do not fit.
	virtual int CreateChannelMixerAudioPanProcessorRenderer(AudioChannelLayout const& inInputLayout,
		AudioChannelLayout const& inOutputLayout, std::vector<std::vector<float>> const& inGains,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const = 0;

	// A panner that leaves the audio as it is, and says so by DoesNotAlterAudio.
	virtual int CreateNoneAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		AudioChannelLayout const& inLayout, InterfaceRef<IAudioPanProcessor>* outProcessor) const = 0;

	// A processor that hands what passes to the host's meter and leaves it alone: each block goes to
	// IAudioMeterSetter::SetMeterData, and a Reset to its Reset, both on the thread that renders. Only a
	// playback at the top level has a meter: in any other context inMeter is never called. It may be empty.
	virtual int CreateAudioMeterRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioMeterSetter> inMeter,
		InterfaceRef<IAudioProcessor>* outProcessor) const = 0;

	// A processor that scales what passes. Controls: the gain, a linear amplitude, and a switch, on while the
	// fader mutes. Without a gain the fader is silent; without a switch it never mutes. A new gain is reached
	// over 5 ms; after a jump of the playhead it stands at once, and without delay compensation it goes in
	// steps. A fader whose switch is on for ever lets a track leave out what comes before it.
	virtual int CreateAudioFaderRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioProcessor>* outProcessor) const = 0;

	// A processor that runs a host's effect, which is required: an empty one raises the null-pointer exception. See
	// IAudioFilter for what is called when. inSecondFilter: one that is started and stopped with it and only
	// asked where whole stretches are processed (IOfflineAudioProcessor); may be empty. Controls: the bypass, and
	// then the effect's parameters in its order. While bypassed, a delay of its latency takes the effect's
	// place; it holds what passed when the effect was bypassed last. inActionFlag: reported with each of the
	// controls by ILiveAudioParameterOwner. inChannelLayout: of what passes; eInvalidArgument for an empty one.
	// A machine exception in IAudioFilter::Process becomes an AudioFilterException; see
	// zorvcore::utility::exceptions::RunGuarded for the signal handlers that this installs.
	virtual int CreateAudioFilterRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioFilter> inFilter,
		InterfaceRef<IAudioFilter> inSecondFilter, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		AudioChannelLayout const& inChannelLayout, InterfaceRef<IAudioProcessor>* outProcessor) const = 0;

	// A processor that taps what passes and leaves it alone: a copy, panned and multiplied by the gain, waits for
	// the inlet of the destination, which takes it within the same block of the sequence. The send is one of the
	// inputs that CreateAudioTrackInletRenderer is given; its track comes before the destination in the group.
	// inSendTarget: the host's object under which the context keeps the send; may be empty. Controls: the gain,
	// a linear amplitude, and a switch, on while nothing is sent. Without a gain nothing is sent either. A gain
	// changes in steps, at the control interval. inPanner: to the layout of the destination; an empty one raises
	// the null-pointer exception. What a block holds beyond the context's largest is lost to the send.
	virtual int CreateAudioSendRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<UnknownBase> inSendTarget,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioPanProcessor> inPanner, InterfaceRef<IAudioProcessor>* outProcessor) const = 0;

	// A processor that reroutes channels in place at full level. eInvalidArgument for a routing to a
	// channel from 64 on.
	virtual int CreateAudioChannelMatrixRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, AudioChannelMatrix const& inMatrix,
		InterfaceRef<IAudioProcessor>* outProcessor) const = 0;

	// A generator of that layout that gives silence. It needs no context and cannot fail.
	virtual int CreateSilentRenderer(
		AudioChannelLayout const& inLayout, InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// A generator that moves every position that it is asked for down onto a frame of the rate. Its clones
	// do not.
	virtual int CreateAlignToFrameRateAudioGeneratorDecorator(
		InterfaceRef<IAudioGenerator> const& inGenerator, FrameRate const& inFrameRate,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// A generator that gives what a process makes of inGenerator, and waits for that up to a day: for offline renders
	// alone. Each Preroll starts the process anew, for the duration from inStartTime to inEndTime, and what it gives first is
	// heard at time 0. From there on times only rise; what has passed is silent, and so is everything where the
	// process has failed or ended. It reads inGenerator on its own thread, in pieces of 2048 samples at most,
	// through inInputPanner, whose first output channel it is given; inOutputPanner leads from its result to the
	// layout that is heard. There are no clones. It needs no context and cannot fail.
	virtual int CreateOfflineAudioProcessorAudioGenerator(InterfaceRef<IAudioGenerator> const& inGenerator,
		InterfaceRef<IAudioPanProcessor> const& inInputPanner,
		InterfaceRef<IAudioPanProcessor> const& inOutputPanner, FrameRate const& inFrameRate,
		TickTime const& inStartTime, TickTime const& inEndTime,
		InterfaceRef<IOfflineAudioProcessor> const& inProcessor,
		InterfaceRef<IAudioGenerator>* outGenerator) const = 0;

	// The factory itself.
	virtual operator InterfaceRef<UnknownBase>() = 0;

	~ISonaroFactory() override = default;
};

} // namespace SN
