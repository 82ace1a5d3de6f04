#pragma once

#include "Sonaro/IOfflineAudioProcessor.h"
#include "Sonaro/Types.h"

#include <string>

namespace SN
{

// An effect, implemented by the host, which ISonaroFactory::CreateAudioFilterRenderer puts into a chain of
// processors. Its parameters are numbered from 0 and have values of its own choice.
//
// Order    GetLatency, GetNumChannels, HasHistory and Clone come at any time; Initialize before the first
//          Process, and then Shutdown before another Initialize or the end. Parameters may be set and read
//          before Initialize, and Initialize and Shutdown leave them as they are.
// Threads  One graph runs one instance and calls it from one thread at a time, unless a function says
//          otherwise. The thread may change between a Preroll and the blocks after it.
// Errors   Exceptions pass through to the caller of the graph. A machine exception in Process, such as an
//          access to memory that is not there, reaches it as an AudioFilterException.
class SONARO_API IAudioFilter : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioFilter> kIdentifier{0x6594e202654c9893ull, 0x098d0e808886c24full};

	// On the thread that renders, between blocks, and on any thread that sets an AudioFilterControl of the effect: a host
	// that does so while the effect runs elsewhere supplies effects that bear it.
	virtual void SetParameter(unsigned inIndex, float inValue) SONARO_NONBLOCKING = 0;
	// The same on the main thread while nothing is rendered: an immediate render, as after an edit while playback
	// stands, is about to begin. It may allocate and lock.
	virtual void SetParameterFromMainThread(unsigned inIndex, float inValue) = 0;
	// What was set last, or the effect's default.
	virtual float GetParameter(unsigned inIndex) = 0;
	// The parameter's value as text for people. Not while rendering.
	virtual void GetParameterText(std::u16string& outText, unsigned inIndex) = 0;

	// By how many samples the output is late. It stays as it is while a node of a graph has the effect: a delay of
	// this length replaces the effect while it is bypassed.
	virtual unsigned GetLatency() SONARO_NONBLOCKING = 0;

	// Another instance with the same settings and without a past, for the copy of a node. inRealTime: as for
	// Initialize, which is still to come. Where it is empty, the copying raises the null-pointer exception.
	virtual void Clone(InterfaceRef<IAudioFilter>& outFilter, bool inRealTime) = 0;

	// Whether the output depends on what was processed before. It also decides who sets the parameters during a
	// run, and so whether curves reach them. Outside playback at the top level, a node sets those of an effect without history in each control block,
	// unless it is the copy of a node. All others it sets at Preroll alone, and afterwards they are changed by what
	// IRenderableAudioComponentParam::UpdateControl does to the parameter's own control, an AudioFilterControl.
	virtual bool HasHistory() = 0;

	// Starts the effect; may allocate. inRealTime: for playback, where Process has to keep up. inMaxFrames: the
	// longest block, in samples. inChannels: of the buffers that Process is given.
	virtual void Initialize(
		bool inRealTime, unsigned inMaxFrames, FrameRate const& inFrameRate, unsigned inChannels) = 0;

	// Processes the UseSize samples of ioBuffer in place, the block that starts at inTime in track time (in reverse, its
	// lowest time): 0 samples to the longest block, and in an item that is faster than 1 up to its speed times as
	// many. A flagged channel is silent, whatever its samples; one that is written has to lose its flag, by
	// AudioBuffer::NoteChannelWrite. inFlag: the context's GetFilterRenderFlag, the host's own. Not called while bypassed.
	virtual void Process(dsp::AudioBuffer& ioBuffer, TickTime inTime, bool inFlag) SONARO_NONBLOCKING = 0;

	// Frees what Initialize has made. The effect may be initialized again.
	virtual void Shutdown() = 0;

	// How many channels the effect works on, 1 to 64. The delay of a bypassed effect has as many, and silences those
	// beyond.
	virtual unsigned GetNumChannels() = 0;

	// Processing of whole stretches: IOfflineAudioProcessor's operations of the same names. An effect that has
	// none answers 0 and an empty stream.
	virtual TickTime GetOfflineLatency() = 0;
	virtual InterfaceRef<IProcessedAudioStream> CreateProcessedStream(
		OfflineAudioReadCallback const& inCallback, unsigned inFlags, TickTime const& inDuration) = 0;

	~IAudioFilter() override = default;
};

} // namespace SN
