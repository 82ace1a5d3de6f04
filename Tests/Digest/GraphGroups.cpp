#include "Digest.h"

#include "Host/Sequence/RandomSequence.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SonaroDigest
{

namespace
{

using namespace SonaroHost;

// A random sequence from its start to beyond its end, in blocks of random lengths.
void RunGraph(unsigned inSeed, Digest& ioDigest)
{
	constexpr unsigned kBlockFrames = 1024;
	constexpr std::int64_t kBeyond = 700;
	auto const random = Sequence::Testing::MakeRandomSequence(inSeed);
	RenderContextScope const context(kBlockFrames, SN::kTimeMax, SN::ImmutableString("digest"));
	Sequence::SequenceGraph const graph(*random.mSequence, context.Get(), random.mFrameRate);
	SN::IAudioGenerator& generator = *graph.GetGenerator();
	generator.InitializeAudioFilters();
	generator.Preroll({0, random.mFrameRate}, false);
	std::int64_t const end = Sequence::GetLength(*random.mSequence).ToFrame64(random.mFrameRate) + kBeyond;
	dsp::AudioBuffer block(graph.GetLayout().size(), kBlockFrames);
	Random lengths(inSeed);
	for (std::int64_t frame = 0; frame < end;)
	{
		auto const count =
			static_cast<unsigned>(std::min<std::int64_t>(1 + lengths.Below(kBlockFrames), end - frame));
		block.SetUseSize(count);
		generator.GetAudioData({frame, random.mFrameRate}, block, false);
		for (unsigned channel = 0; channel < block.GetNumChannels(); ++channel)
		{
			if (!block.IsChannelSilent(channel))
			{
				ioDigest.AddAll(std::span<float const>(block.GetChannel(channel), count));
			}
		}
		frame += count;
	}
	generator.ShutdownAudioFilters();
}

template <unsigned kFirst>
void RunGraphs(Digest& ioDigest)
{
	for (unsigned seed = kFirst; seed < kFirst + 250; ++seed)
	{
		RunGraph(seed, ioDigest);
	}
}

// In parts, which show where graphs differ.
constexpr Group kGroups[] = {
	{"graphs 1 to 250", RunGraphs<1>},
	{"graphs 251 to 500", RunGraphs<251>},
	{"graphs 501 to 750", RunGraphs<501>},
	{"graphs 751 to 1000", RunGraphs<751>},
};

} // namespace

std::span<Group const> GetGraphGroups()
{
	return kGroups;
}

} // namespace SonaroDigest
