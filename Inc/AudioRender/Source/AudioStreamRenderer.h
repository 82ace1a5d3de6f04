#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "Sonaro/IAsyncAudioSource.h"
#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/IAudioSource.h"
#include "Sonaro/IAudioSourceFile.h"
#include "Sonaro/IOffsetablePreview.h"

#include <cstdint>

namespace SN
{

// The leaf of the graph: a host's source as a generator, at the source's own sample rate, with all its
// channels or one of them. Time before the source's start is silence. With prefetch on it reads what
// was read ahead, otherwise it reads blocking. It keeps nothing from block to block.
class AudioStreamRenderer final
	: public Implements<AudioStreamRenderer, IAudioGenerator, IAudioGeneratorPrivate, IOffsetablePreview,
		  IAudioRenderGraphNodeInfo, AudioTrackRenderableItemMixin>,
	  public AudioRenderContextClient
{
public:
	static constexpr Identifier<AudioStreamRenderer> kIdentifier{
		0x540623c343646fa7ull, 0x8090fff3a35cee69ull};

	// The channel index that stands for all channels.
	static constexpr std::uint32_t kAllChannels = 0xFFFFFFFF;

	// See ISonaroFactory::CreateAudioStreamRenderer.
	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioSource> const& inSource, int inChannelIndex, double inStreamSpeed,
		InterfaceRef<UnknownBase> const& inKey, InterfaceRef<IAudioGenerator>* outGenerator);

	InterfaceRef<IAudioGenerator> Clone() override;
	bool HasHistory() override { return false; }
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }
	void Preroll(TickTime const&, bool) override {}
	void FillInitialDelay(TickTime const&, TickTime const&, bool, bool) SONARO_NONBLOCKING override {}
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING override;
	void Reset() override {}
	void InitializeAudioFilters() override {}
	void ShutdownAudioFilters() override {}

	unsigned GetNumChannels() SONARO_NONBLOCKING override;
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override { return GetNumChannels(); }
	AudioChannelLayout GetAudioChannelLayout() override;
	FrameRate GetGeneratorFrameRate() override { return GetFrameRate(); }

	void AddPreviewOffset(TickTime const& inOffset) override { mPreviewOffset += inOffset; }

	std::u16string GetNodeName() override { return u"AudioStreamRenderer"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {mSource}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

private:
	// One channel of a source that is there: read through scratch memory.
	bool SelectsChannel() const { return mChannelIndex != kAllChannels && mSource; }
	void SetSource(InterfaceRef<IAudioSource> const& inSource);
	void ReadInto(dsp::AudioBuffer& ioTarget, dsp::AudioBuffer& ioBuffer, TickTime const& inPosition);
	void ReadSource(dsp::AudioBuffer& ioTarget, TickTime const& inTime);

	InterfaceRef<IAudioSource> mSource;
	// The same source, where it answers to these.
	InterfaceRef<IAudioSourceFile> mFile;
	InterfaceRef<IAsyncAudioSource> mAsync;
	std::uint32_t mChannelIndex = kAllChannels;
	// Kept for the host and without effect here.
	double mStreamSpeed = 1.0;
	TickTime mPreviewOffset;
	// Made under a key: used by more than one parent, and its own clone.
	bool mIsShared = false;
};

} // namespace SN
