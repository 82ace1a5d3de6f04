#include "SonaroHost/Render/Programme.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Engine/RenderContextScope.h"

#include <utility>

namespace SonaroHost
{

Sequence::SequenceGraph MakeGraph(Programme const& inProgramme,
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, Sequence::GraphView const& inView,
	SN::Prefetcher const* inPrefetcher)
{
	try
	{
		return {*inProgramme.mDescription, inContext, inProgramme.GetFrameRate(), inPrefetcher, inView};
	}
	catch (HostError const& error)
	{
		if (inProgramme.mFile.empty() || error.GetKind() != HostError::Kind::kRequest)
		{
			throw;
		}
		// What the description asks for in vain, the file does.
		HostError::Parts parts = error.GetParts();
		parts.mFile = inProgramme.mFile;
		throw HostError(HostError::Kind::kInput, std::move(parts));
	}
}

unsigned ChooseBlock(Programme const& inProgramme, unsigned inWanted)
{
	constexpr std::uint64_t kMostSamples = std::uint64_t{1} << 21;
	std::uint64_t const channels = Sequence::CountChannels(*inProgramme.mDescription);
	unsigned frames = inWanted;
	while (frames >= 2 * kControlInterval && frames * channels > kMostSamples)
	{
		frames /= 2;
	}
	return frames;
}

void CheckMedia(Programme const& inProgramme, GraphMedia const& inMedia)
{
	if (auto const failure = inMedia.FindFailure())
	{
		throw *failure;
	}
	auto const damaged = inProgramme.mRefusesDamage ? inMedia.ListDamaged() : std::vector<DamagedMedia>();
	if (!damaged.empty())
	{
		RefuseFile(damaged.front().mPath, DescribeDamage(damaged.front()), "get a complete copy");
	}
}

void CheckEffects(
	Programme const& inProgramme, Sequence::GraphReport const& inReport, std::int64_t inFirstFrame)
{
	for (auto const& effect : inReport.mEffects)
	{
		EffectFault::Kind const fault = effect->mFault.load();
		if (fault == EffectFault::Kind::kNone)
		{
			continue;
		}
		std::string const where = effect->mPlace.empty() ? "" : " on " + effect->mPlace;
		throw HostError(HostError::Kind::kInput,
			{inProgramme.mFile, effect->mOrigin,
				"the effect " + QuoteName(effect->mName) + where + " " + EffectFault::Describe(fault) +
					" at " + FormatTime(inFirstFrame, inProgramme.mSampleRate),
				"remove it, or set it otherwise"});
	}
}

} // namespace SonaroHost
