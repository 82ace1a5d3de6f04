#include "PlanarRead.h"

#include "Render/Encoder/AudioEncoder.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Serve
{

namespace
{

// Channels that blocks are put into, in the order of a file.
class PlanarSamples
{
public:
	explicit PlanarSamples(PlanarRead const& inRead)
		: mPlaces(FindFramePlaces({{}, 0, inRead.mLayout, 0, {}})),
		  mAdded(inRead.mDropsSignsOfZeros ? 0.0f : -0.0f),
		  mChannels(inRead.mChannels)
	{
	}

	void Silence(std::int64_t inFirst, std::int64_t inFrames)
	{
		for (float* const channel : mChannels)
		{
			std::fill_n(channel + inFirst, inFrames, 0.0f);
		}
	}

	void Take(dsp::AudioBuffer const& inBlock, std::int64_t inFirst)
	{
		for (unsigned place = 0; place < mChannels.size(); ++place)
		{
			unsigned const channel = mPlaces.GetChannel(place);
			float const gain = mPlaces.GetGain(place);
			float* const out = mChannels[place] + inFirst;
			if (inBlock.IsChannelSilent(channel))
			{
				std::fill_n(out, inBlock.GetUseSize(), 0.0f);
				continue;
			}
			float const* const samples = inBlock.GetChannel(channel);
			std::transform(samples, samples + inBlock.GetUseSize(), out,
				[gain, added = mAdded](float inSample) { return inSample * gain + added; });
		}
	}

private:
	FramePlaces mPlaces;
	// Nothing, or what turns -0 into 0.
	float mAdded;
	std::span<float* const> mChannels;
};

} // namespace

void ReadPlanes(GraphPool& ioPool, LeftOut const& inLeftOut, PlanarRead const& inRead)
{
	ProgrammeRange const& range = inRead.mRange;
	std::int64_t const first = std::clamp<std::int64_t>(range.mFirstFrame, 0, inRead.mProgrammeFrames);
	std::int64_t const end =
		std::clamp<std::int64_t>(range.mFirstFrame + range.mFrames, first, inRead.mProgrammeFrames);
	std::int64_t done = first < end ? first - range.mFirstFrame : range.mFrames;
	PlanarSamples samples(inRead);
	samples.Silence(0, done);
	if (first < end)
	{
		ioPool.Render(inLeftOut, {first, end - first}, inRead.mDeadline,
			[&](dsp::AudioBuffer const& inBlock)
			{
				samples.Take(inBlock, done);
				done += inBlock.GetUseSize();
				if (inRead.mAfterBlock)
				{
					inRead.mAfterBlock();
				}
			});
	}
	samples.Silence(done, range.mFrames - done);
}

} // namespace SonaroHost::Serve
