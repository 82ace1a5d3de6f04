#include "SonaroHost/Render/ClipProgramme.h"

#include "Media/Denoise/NoiseLearning.h"
#include "Media/SourceGroup.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace SonaroHost
{

namespace
{

// What is heard of a clip, in frames of the output.
struct ClipPart
{
	PlannedClip const* mClip = nullptr;
	std::int64_t mFirst = 0;
	std::int64_t mEnd = 0;
};

// Lays a part over others, of which what it covers is cut away.
std::vector<ClipPart> Lay(ClipPart const& inPart, std::vector<ClipPart> const& inOthers)
{
	std::vector<ClipPart> parts{inPart};
	for (ClipPart const& other : inOthers)
	{
		if (other.mFirst < inPart.mFirst)
		{
			parts.push_back({other.mClip, other.mFirst, std::min(other.mEnd, inPart.mFirst)});
		}
		if (other.mEnd > inPart.mEnd)
		{
			parts.push_back({other.mClip, std::max(other.mFirst, inPart.mEnd), other.mEnd});
		}
	}
	return parts;
}

std::vector<ClipPart> LayClips(ProgrammePlan const& inPlan)
{
	std::vector<ClipPart> parts;
	for (PlannedClip const& clip : inPlan.GetClips())
	{
		parts = Lay({&clip, clip.mPosition, clip.mPosition + clip.mFrames}, parts);
	}
	std::ranges::sort(parts, {}, &ClipPart::mFirst);
	return parts;
}

using Sources = std::vector<SN::InterfaceRef<AudioFileSource>>;

// The sources of a plan, and what graphs that read them side by side open instead.
struct ClipSources
{
	Sources mSources;
	std::shared_ptr<SharedSpools> mSpools = std::make_shared<SharedSpools>();
	// What the next graph's sources belong to; none while graphs read those of the plan.
	std::weak_ptr<SourceGroup> mGroup;
};

std::shared_ptr<Sequence::Media const> MakeMedia(PlannedClip const& inClip, SN::FrameRate const& inFrameRate,
	std::shared_ptr<ClipSources const> const& inSources)
{
	AudioFileInfo const& info = inClip.GetInfo();
	// The samples count as the output's: the reading speed has the ratio of the rates in it.
	return std::make_shared<Sequence::Media>(Sequence::Media{info.mPath.filename().string(),
		inFrameRate.GetSamplesPerSecond(), info.mFrames, info.mLayout,
		[source = inClip.mSource, inSources](SN::FrameRate const&)
		{
			auto const group = inSources->mGroup.lock();
			return group ? group->Open(source->GetInfo(), source->GetFrameRate()) : source;
		}});
}

// The place of a part's first sample in the source, counted from what is heard of it. What is resampled backwards is
// what forward gives, the other way round; the engine's resampler begins with the last sample, which comes to the same
// where nothing is resampled.
Ratio FindStart(ClipPart const& inPart, ProgrammePlan const& inPlan)
{
	PlannedClip const& clip = *inPart.mClip;
	std::int64_t const passed = inPart.mFirst - clip.mPosition;
	Ratio const speed = Ratio::FromExactDouble(clip.mReadingSpeed);
	if (!inPlan.IsReversed())
	{
		return Ratio(passed) * speed;
	}
	if (inPlan.GetResampling() == Sequence::Resampling::kEngine)
	{
		return Ratio(clip.GetFramesOfSource() - 1) - Ratio(passed) * speed;
	}
	return Ratio(clip.mFrames - 1 - passed) * speed;
}

Sequence::Item MakeItem(ClipPart const& inPart, std::shared_ptr<Sequence::Media const> const& inMedia,
	ProgrammePlan const& inPlan)
{
	PlannedClip const& clip = *inPart.mClip;
	SN::FrameRate const frameRate = inPlan.GetFrameRate();
	Ratio const start = FindStart(inPart, inPlan);
	std::int64_t const nearest = start.Round();
	Sequence::Item item;
	item.mName = inMedia->mName;
	item.mStart = SN::TickTime(inPart.mFirst, frameRate);
	item.mEnd = SN::TickTime(inPart.mEnd, frameRate);
	item.mContent = Sequence::Clip{inMedia, clip.GetFirstFrameOfSource() + nearest, clip.mChannels};
	item.mOffset = start - Ratio(nearest);
	item.mResampling = inPlan.GetResampling();
	item.mSpeed = inPlan.IsReversed() ? -clip.mReadingSpeed : clip.mReadingSpeed;
	if (clip.mLayout.GetPanner())
	{
		item.mChain.mPan = AutomationParameter<float>::Create(clip.mLayout.GetPan());
	}
	return item;
}

// That of the clips of 5.1; of others none is asked for.
std::optional<SN::AudioChannelMix::MixdownType51> FindMixdown(ProgrammePlan const& inPlan)
{
	auto const& clips = inPlan.GetClips();
	auto const found = std::ranges::find_if(
		clips, [](PlannedClip const& inClip) { return inClip.mLayout.GetMixdown().has_value(); });
	return found != clips.end() ? found->mLayout.GetMixdown() : std::nullopt;
}

// Each file once, in the order of the inputs, with what is found of it.
template <class Find>
std::vector<DamagedMedia> ListDamaged(Sources const& inSources, Find const& inFind)
{
	std::vector<DamagedMedia> list;
	for (SN::InterfaceRef<AudioFileSource> const& source : inSources)
	{
		AudioFileInfo const& info = source->GetInfo();
		DamagedMedia media{info.mPath, info.mSampleRate, inFind(info)};
		bool const isListed = std::ranges::any_of(
			list, [&media](DamagedMedia const& inListed) { return inListed.mPath == media.mPath; });
		if (!media.mStretches.empty() && !isListed)
		{
			list.push_back(std::move(media));
		}
	}
	return list;
}

// What the plan's sources read.
class ClipMedia final : public GraphMedia
{
public:
	explicit ClipMedia(Sources inSources)
		: mSources(std::move(inSources))
	{
	}

	std::optional<HostError> FindFailure() const override
	{
		auto const found = std::ranges::find_if(
			mSources, [](auto const& inSource) { return inSource->GetFailure().has_value(); });
		return found != mSources.end() ? (*found)->GetFailure() : std::nullopt;
	}
	std::vector<DamagedMedia> ListDamaged() const override
	{
		return SonaroHost::ListDamaged(
			mSources, [](AudioFileInfo const& inInfo) { return inInfo.mDamage->Get(); });
	}
	std::int64_t CountFramesToLearn() const override
	{
		return SonaroHost::CountFramesToLearn(ListRecordings());
	}
	bool LearnNoise(
		std::function<void(std::int64_t)> const& inReport, std::stop_token const& inStop) const override
	{
		return SonaroHost::LearnNoise(ListRecordings(), inReport, inStop);
	}
	std::vector<LearnedNoise> ListLearnedNoise() const override
	{
		return SonaroHost::ListLearnedNoise(ListRecordings());
	}

private:
	NoisyRecordings ListRecordings() const
	{
		NoisyRecordings recordings;
		for (auto const& source : mSources)
		{
			recordings.push_back(&source->GetInfo());
		}
		return recordings;
	}

	Sources mSources;
};

class ClipGraphMedia final : public GraphMedia
{
public:
	explicit ClipGraphMedia(ClipSources& ioSources)
		: mSources(ioSources.mSources),
		  mGroup(std::make_shared<SourceGroup>(ioSources.mSpools))
	{
		ioSources.mGroup = mGroup;
	}

	std::optional<HostError> FindFailure() const override { return mGroup->FindFailure(); }
	std::uint64_t CountUnreadFrames() const override { return mGroup->CountMissedFrames(); }
	std::vector<DamagedMedia> ListDamaged() const override
	{
		return SonaroHost::ListDamaged(
			mSources, [this](AudioFileInfo const& inInfo) { return mGroup->GetDamage(inInfo); });
	}

private:
	Sources mSources;
	std::shared_ptr<SourceGroup> mGroup;
};

} // namespace

Programme MakeProgramme(ProgrammePlan const& inPlan, std::vector<Effects::PreparedEffect> const& inEffects)
{
	auto description = std::make_shared<Sequence::Description>();
	description->mLayout = inPlan.GetLayout();
	if (auto const& listener = inPlan.GetListener())
	{
		Sequence::HearWithTwoEars(*listener, *description);
	}
	description->mMixdown = FindMixdown(inPlan);
	Sequence::Track& track = description->mTracks.emplace_back();
	track.mLayout = inPlan.GetLayout();
	std::map<PlannedClip const*, std::shared_ptr<Sequence::Media const>> media;
	auto const sources = std::make_shared<ClipSources>();
	for (PlannedClip const& clip : inPlan.GetClips())
	{
		media[&clip] = MakeMedia(clip, inPlan.GetFrameRate(), sources);
		sources->mSources.push_back(clip.mSource);
	}
	for (ClipPart const& part : LayClips(inPlan))
	{
		track.mItems.push_back(MakeItem(part, media.at(part.mClip), inPlan));
	}
	for (Effects::PreparedEffect const& effect : inEffects)
	{
		description->mMaster.mStages.emplace_back(Sequence::Effect{effect.GetName(),
			[effect](auto const&... inGraph) { return effect.Make(inGraph...); }, false, effect.GetJumps(),
			effect.GetFacts(), effect.GetControls()});
	}
	return {description, inPlan.GetSampleRate(), 0, inPlan.GetFrames(), {},
		std::make_shared<ClipMedia>(sources->mSources),
		[sources] { return std::make_unique<ClipGraphMedia>(*sources); }};
}

} // namespace SonaroHost
