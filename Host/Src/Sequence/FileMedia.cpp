#include "SonaroHost/Sequence/FileMedia.h"

#include "Media/Denoise/DenoisedInfo.h"
#include "Media/Denoise/NoiseLearning.h"
#include "Media/SourceGroup.h"
#include "Media/Stretch/StretchedInfo.h"
#include "SonaroHost/Media/AudioFileInspection.h"
#include "SonaroHost/Media/NoSoundError.h"

namespace SonaroHost
{

namespace
{

// What is left out of a file between two regions of it that are stretched by themselves.
constexpr int kSecondsApart = 10;

} // namespace

// What graphs have opened. The graphs alone keep it open.
class FileMedia::OpenSources
{
public:
	SN::InterfaceRef<SN::IAudioSource> Open(AudioFileInfo const& inInfo, SN::FrameRate const& inCountingRate)
	{
		if (auto const group = mGroup.lock())
		{
			return group->Open(inInfo, inCountingRate);
		}
		SN::InterfaceRef<AudioFileSource> const source = AudioFileSource::Open(inInfo, inCountingRate);
		std::erase_if(mSources, [](auto const& inSource) { return inSource.expired(); });
		mSources.push_back(source.GetUnknown());
		return source;
	}

	std::optional<HostError> FindFailure() const
	{
		for (std::weak_ptr<SN::Unknown> const& held : mSources)
		{
			auto const source = SN::InterfaceRef<AudioFileSource>::FromUnknown(held.lock());
			if (auto failure = source ? source->GetFailure() : std::nullopt)
			{
				return failure;
			}
		}
		return std::nullopt;
	}

	std::shared_ptr<SourceGroup> OpenGroup()
	{
		auto group = std::make_shared<SourceGroup>(mSpools);
		mGroup = group;
		return group;
	}

private:
	std::vector<std::weak_ptr<SN::Unknown>> mSources;
	std::shared_ptr<SharedSpools> mSpools = std::make_shared<SharedSpools>();
	// What the next graph's sources belong to.
	std::weak_ptr<SourceGroup> mGroup;
};

class FileMedia::GroupedMedia final : public GraphMedia
{
public:
	GroupedMedia(FileMedia const& inMedia, std::shared_ptr<SourceGroup> inGroup)
		: mMedia(inMedia),
		  mGroup(std::move(inGroup))
	{
	}

	std::optional<HostError> FindFailure() const override
	{
		auto const failure = mGroup->FindFailure();
		return failure ? std::optional(mMedia.NameAsShown(*failure)) : std::nullopt;
	}
	std::uint64_t CountUnreadFrames() const override { return mGroup->CountMissedFrames(); }
	std::vector<DamagedMedia> ListDamaged() const override
	{
		return mMedia.ListDamaged([this](AudioFileInfo const& inInfo) { return mGroup->GetDamage(inInfo); });
	}

private:
	FileMedia const& mMedia;
	std::shared_ptr<SourceGroup> mGroup;
};

FileMedia::FileMedia()
	: mSources(std::make_shared<OpenSources>())
{
}

std::shared_ptr<Sequence::Media const> FileMedia::Get(
	std::filesystem::path const& inPath, std::filesystem::path const& inShownPath, unsigned inStream)
{
	auto const [place, isNew] = mFiles.try_emplace({inPath, inStream});
	File& file = place->second;
	if (isNew)
	{
		file.mInfo.mPath = inShownPath;
		mShownFiles.try_emplace({inShownPath, inStream}, &file);
		try
		{
			AudioFileInfo const info = InspectAudioFile(inPath, inStream);
			file.mInfo = info;
			file.mInfo.mPath = inShownPath;
			constexpr bool kIsDenoised = false;
			file.mMedia = MakeMedia(info, kIsDenoised);
		}
		catch (SilentMovieError const& error)
		{
			file.mError = NameAsShown(error);
			file.mIsSilent = true;
		}
		catch (HostError const& error)
		{
			file.mError = NameAsShown(error);
		}
	}
	if (file.mIsSilent)
	{
		throw SilentMovieError(file.mError->GetParts());
	}
	if (!file.mMedia)
	{
		throw *file.mError;
	}
	return file.mMedia;
}

std::shared_ptr<Sequence::Media const> FileMedia::MakeMedia(
	AudioFileInfo const& inInfo, bool inIsDenoised) const
{
	return std::make_shared<Sequence::Media>(Sequence::Media{inInfo.mPath.filename().string(),
		static_cast<double>(inInfo.mSampleRate), inInfo.mFrames, inInfo.mLayout,
		[sources = mSources, info = inInfo](SN::FrameRate const& inCountingRate)
		{ return sources->Open(info, inCountingRate); },
		true, inIsDenoised});
}

std::shared_ptr<Sequence::Media const> FileMedia::GetDenoised(Key const& inFile, Denoise const& inDenoise)
{
	File& file = mFiles.at(inFile);
	DenoisedFile& denoised = file.mDenoised[inDenoise];
	if (!denoised.mMedia)
	{
		denoised.mInfo = MakeDenoised(file.mInfo, inDenoise);
		denoised.mInfo.mPath = inFile.first;
		constexpr bool kIsDenoised = true;
		denoised.mMedia = MakeMedia(denoised.mInfo, kIsDenoised);
	}
	return denoised.mMedia;
}

std::shared_ptr<Sequence::Media const> FileMedia::GetStretched(Key const& inFile,
	std::optional<Denoise> const& inDenoise, Stretch const& inStretch, UsedRegions::Span const& inUsed)
{
	File& file = mFiles.at(inFile);
	AudioFileInfo info = inDenoise ? file.mDenoised.at(*inDenoise).mInfo : file.mInfo;
	info.mPath = inFile.first;
	Recording& recording = file.mStretched[{inDenoise, inStretch}];
	auto& used = recording.mUsed;
	if (!used)
	{
		used = std::make_shared<UsedRegions>(std::int64_t{kSecondsApart} * info.mSampleRate);
	}
	used->Add(inUsed);
	auto const [place, isNew] = recording.mMedia.try_emplace(used->Find(inUsed.mFirst).mFirst);
	if (isNew)
	{
		Stretch whole = inStretch;
		whole.mStart = inStretch.mRamp ? inStretch.mStart : Ratio();
		place->second = std::make_shared<Sequence::Media>(Sequence::Media{inFile.first.filename().string(),
			static_cast<double>(info.mSampleRate), whole.CountFrames(info.mFrames), info.mLayout,
			[sources = mSources, info, whole, used = used, first = inUsed.mFirst](
				SN::FrameRate const& inCountingRate)
			{
				// By now all that is used is known.
				AudioFileInfo region = info;
				Stretch stretch = whole;
				region.mFramesBefore = used->Find(first).mFirst;
				if (!stretch.mRamp)
				{
					stretch.mStart = Ratio(region.mFramesBefore) * stretch.mSpeed;
				}
				return sources->Open(MakeStretched(std::move(region), stretch), inCountingRate);
			},
			false, inDenoise.has_value()});
	}
	return place->second;
}

std::optional<HostError> FileMedia::FindFailure() const
{
	auto const failure = mSources->FindFailure();
	return failure ? std::optional(NameAsShown(*failure)) : std::nullopt;
}

AudioFileInfo const* FileMedia::FindInfo(
	std::filesystem::path const& inShownPath, std::optional<unsigned> const& inStream) const
{
	auto const found = mShownFiles.lower_bound({inShownPath, inStream.value_or(0)});
	bool const isThere = found != mShownFiles.end() && found->first.first == inShownPath &&
						 (!inStream || found->first.second == *inStream);
	return isThere && found->second->mMedia ? &found->second->mInfo : nullptr;
}

std::unique_ptr<GraphMedia> FileMedia::OpenForGraph() const
{
	return std::make_unique<GroupedMedia>(*this, mSources->OpenGroup());
}

std::vector<AudioFileInfo const*> FileMedia::ListDenoised() const
{
	std::vector<AudioFileInfo const*> list;
	for (auto const& [key, file] : mFiles)
	{
		for (auto const& [denoise, denoised] : file.mDenoised)
		{
			list.push_back(&denoised.mInfo);
		}
	}
	return list;
}

std::int64_t FileMedia::CountFramesToLearn() const
{
	return SonaroHost::CountFramesToLearn(ListDenoised());
}

bool FileMedia::LearnNoise(
	std::function<void(std::int64_t)> const& inReport, std::stop_token const& inStop) const
{
	try
	{
		return SonaroHost::LearnNoise(ListDenoised(), inReport, inStop);
	}
	catch (HostError const& error)
	{
		throw NameAsShown(error);
	}
}

std::vector<LearnedNoise> FileMedia::ListLearnedNoise() const
{
	auto list = SonaroHost::ListLearnedNoise(ListDenoised());
	for (LearnedNoise& learned : list)
	{
		learned.mPath = GetShownPath(learned.mPath);
	}
	return list;
}

std::vector<DamagedMedia> FileMedia::ListDamaged() const
{
	return ListDamaged([](AudioFileInfo const& inInfo) { return inInfo.mDamage->Get(); });
}

std::vector<DamagedMedia> FileMedia::ListDamaged(
	std::function<std::vector<MediaDamage::Stretch>(AudioFileInfo const&)> const& inFind) const
{
	std::vector<DamagedMedia> damaged;
	for (auto const& [key, file] : mShownFiles)
	{
		if (auto stretches = inFind(file->mInfo); !stretches.empty())
		{
			damaged.push_back({key.first, file->mInfo.mSampleRate, std::move(stretches)});
		}
	}
	return damaged;
}

HostError FileMedia::NameAsShown(HostError const& inError) const
{
	HostError::Parts parts = inError.GetParts();
	parts.mFile = GetShownPath(parts.mFile);
	return HostError(inError.GetKind(), std::move(parts));
}

std::filesystem::path const& FileMedia::GetShownPath(std::filesystem::path const& inPath) const
{
	auto const found = mFiles.lower_bound({inPath, 0});
	bool const isKnown = found != mFiles.end() && found->first.first == inPath;
	return isKnown ? found->second.mInfo.mPath : inPath;
}

} // namespace SonaroHost
