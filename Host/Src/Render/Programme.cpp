#include "SonaroHost/Render/Programme.h"

#include "Effect/BadInput.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Engine/RenderContextScope.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace SonaroHost
{

namespace
{

struct Fault
{
	Sequence::EffectHealth const* mEffect = nullptr;
	EffectFault::Kind mKind = EffectFault::Kind::kNone;
	// In the programme: the first wrong frame, or that of a block in which it is.
	std::int64_t mFrame = 0;
	bool mIsExact = false;
};

Fault FindFault(
	Sequence::EffectHealth const& inEffect, Programme const& inProgramme, std::int64_t inFirstFrame)
{
	Fault fault{&inEffect, inEffect.mFault.load(), inFirstFrame, false};
	if (inEffect.mTime.mIsKnown)
	{
		SN::FrameRate const frameRate = inProgramme.GetFrameRate();
		SN::TickTime const half = SN::TickTime::FromTicks(frameRate.GetTicksPerFrame() / 2);
		SN::TickTime const time =
			inEffect.mTime.Map(SN::TickTime::FromTicks(inEffect.mFaultTicks.load())) + half;
		fault.mFrame = time.ToFrame64(frameRate) - inProgramme.mFirstFrame;
		fault.mIsExact = EffectFault::HasFrame(fault.mKind);
	}
	return fault;
}

// " at 0:00.201 of the output (sample 9636)".
std::string DescribeTime(Fault const& inFault, Programme const& inProgramme)
{
	std::int64_t const frame = std::max<std::int64_t>(inFault.mFrame, 0);
	std::string const time = FormatTime(frame, inProgramme.mSampleRate) +
							 (inProgramme.mFile.empty() ? " of the output" : " of the timeline");
	return inFault.mIsExact ? " at " + time + " (sample " + std::to_string(frame) + ")"
							: " in the block at " + time;
}

HostError::Parts Describe(Fault const& inFault, Programme const& inProgramme)
{
	Sequence::EffectHealth const& effect = *inFault.mEffect;
	std::string const where = effect.mPlace.empty() ? "" : " on " + effect.mPlace;
	std::string const time = DescribeTime(inFault, inProgramme);
	std::string const name = "the effect " + QuotePath(effect.mName) + where;
	if (inFault.mKind != EffectFault::Kind::kBadInput)
	{
		return {inProgramme.mFile, effect.mOrigin, name + " " + EffectFault::Describe(inFault.mKind) + time,
			"remove it, or set it otherwise"};
	}
	std::string const bad = " has samples that are infinite or not a number";
	SN::FrameRate const frameRate = inProgramme.GetFrameRate();
	// A playback goes on reading its own.
	auto const media = inProgramme.mOpenForGraph ? inProgramme.mOpenForGraph() : nullptr;
	auto const input = FindBadInput(*inProgramme.mDescription, frameRate,
		SN::TickTime(inProgramme.mFirstFrame + inFault.mFrame, frameRate));
	if (!input)
	{
		return {inProgramme.mFile, effect.mOrigin, "what goes into " + name + bad + time,
			"lower the levels before it"};
	}
	std::string const clip = input->mItem.empty() || input->mItem == input->mMedia
								 ? ""
								 : " of the clip " + QuotePath(input->mItem);
	std::string const first =
		input->mFrame ? "its sample " + std::to_string(*input->mFrame) : "the first one";
	return {inProgramme.mFile, input->mOrigin,
		"the file " + QuotePath(input->mMedia) + clip + bad + ": " + first + " goes into " + name + time,
		"repair the file, or leave that part out"};
}

} // namespace

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

HostError::Parts DescribeFault(
	Programme const& inProgramme, Sequence::EffectHealth const& inEffect, std::int64_t inFirstFrame)
{
	return Describe(FindFault(inEffect, inProgramme, inFirstFrame), inProgramme);
}

void CheckEffects(
	Programme const& inProgramme, Sequence::GraphReport const& inReport, std::int64_t inFirstFrame)
{
	std::vector<Fault> faults;
	for (auto const& effect : inReport.mEffects)
	{
		if (effect->mFault.load(std::memory_order_acquire) != EffectFault::Kind::kNone)
		{
			faults.push_back(FindFault(*effect, inProgramme, inFirstFrame));
		}
	}
	if (!faults.empty())
	{
		throw HostError(HostError::Kind::kInput,
			Describe(*std::ranges::min_element(faults, {}, &Fault::mFrame), inProgramme));
	}
}

} // namespace SonaroHost
