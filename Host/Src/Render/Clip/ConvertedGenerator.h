#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Engine/LayoutPlan.h"
#include "SonaroHost/Render/LayoutConversion.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost
{

// How a graph comes to another layout.
struct ConversionSettings
{
	LayoutPlan mPlan;
	SN::InterfaceRef<SN::IAudioRenderContext> mContext;
	SN::FrameRate mFrameRate;
};

// A graph in another layout. It reads into a buffer of its own: a conversion may go by other constants in a
// window of somebody else's.
class ConvertedGenerator final : public SN::Implements<ConvertedGenerator, SN::IAudioGenerator>
{
public:
	ConvertedGenerator(
		SN::InterfaceRef<SN::IAudioGenerator> const& inSource, ConversionSettings const& inSettings);

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override;
	bool HasHistory() override { return mSource->HasHistory(); }
	SN::TickTime GetDelay() override { return mSource->GetDelay(); }
	void Preroll(SN::TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(SN::TickTime const& inStartTime, SN::TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) override;
	void AccumulatePrefetchRequests(SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator) override;
	// ioBuffer holds at most the context's largest block.
	void GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) override;
	void Reset() override { mSource->Reset(); }
	void InitializeAudioFilters() override { mSource->InitializeAudioFilters(); }
	void ShutdownAudioFilters() override { mSource->ShutdownAudioFilters(); }

private:
	SN::InterfaceRef<SN::IAudioGenerator> mSource;
	ConversionSettings mSettings;
	LayoutConversion mConversion;
	dsp::AudioBuffer mBlock;
};

} // namespace SonaroHost
