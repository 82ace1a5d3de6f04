#include "SonaroHost/Render/TimelineGraph.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Engine/RenderContextScope.h"

#include <cstdint>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

// The largest block of renders, on which their largest speed depends.
constexpr unsigned kBlockFrames = 4096;

} // namespace

Sequence::SequenceGraph MakeTimelineGraph(
	TimelineSequence const& inSequence, SN::InterfaceRef<SN::IAudioRenderContext> const& inContext)
{
	try
	{
		return {
			*inSequence.mDescription, inContext, SN::FrameRate::FromSamplesPerSecond(inSequence.mSampleRate)};
	}
	catch (HostError const& error)
	{
		if (error.GetKind() != HostError::Kind::eRequest)
		{
			throw;
		}
		// What a description asks for in vain is the file's fault here.
		HostError::Parts parts = error.GetParts();
		parts.mFile = inSequence.mFile;
		throw HostError(HostError::Kind::eInput, std::move(parts));
	}
}

unsigned ChooseBlock(TimelineSequence const& inSequence, unsigned inWanted)
{
	constexpr std::uint64_t kMostSamples = std::uint64_t{1} << 21;
	std::uint64_t const channels = Sequence::CountChannels(*inSequence.mDescription);
	unsigned frames = inWanted;
	while (frames >= 2 * kControlInterval && frames * channels > kMostSamples)
	{
		frames /= 2;
	}
	return frames;
}

void CheckCanRender(TimelineSequence const& inSequence)
{
	CheckHasSound(inSequence);
	RenderContextScope const context(
		ChooseBlock(inSequence, kBlockFrames), SN::kTimeMax, SN::ImmutableString("check"));
	MakeTimelineGraph(inSequence, context.Get());
}

void CheckHasSound(TimelineSequence const& inSequence)
{
	if (inSequence.mFrames == 0)
	{
		throw HostError(HostError::Kind::eInput,
			{inSequence.mFile, inSequence.mPlace, "has no length; there is nothing to render", {}});
	}
	if (!inSequence.mWhySilent.empty())
	{
		throw HostError(HostError::Kind::eNothingHeard,
			{inSequence.mFile, inSequence.mPlace,
				"nothing in this timeline is heard: " + inSequence.mWhySilent, {}});
	}
}

} // namespace SonaroHost::Otio
