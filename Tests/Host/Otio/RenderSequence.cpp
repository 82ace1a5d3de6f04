#include "RenderSequence.h"

#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"

namespace SonaroHost::Otio
{

SN::Testing::Samples RenderSequence(
	TimelineSequence const& inSequence, unsigned inBlockFrames, Sequence::GraphView const& inView)
{
	SN::FrameRate const rate = SN::FrameRate::FromSamplesPerSecond(inSequence.mSampleRate);
	RenderContextScope const context(inBlockFrames, SN::kTimeMax, SN::ImmutableString("timeline"));
	Sequence::SequenceGraph const graph(*inSequence.mDescription, context.Get(), rate, nullptr, inView);
	SN::IAudioGenerator& generator = *graph.GetGenerator();
	generator.InitializeAudioFilters();
	generator.Preroll({inSequence.mFirstFrame, rate}, false);
	SN::Testing::Samples const samples = SN::Testing::Pull(generator,
		{inSequence.mFirstFrame, static_cast<unsigned>(inSequence.mFrames),
			static_cast<unsigned>(graph.GetLayout().size()), rate},
		SN::Testing::BlocksOf(inBlockFrames));
	generator.ShutdownAudioFilters();
	return samples;
}

} // namespace SonaroHost::Otio
