#include "SonaroHost/Sequence/FileMedia.h"

#include "SonaroHost/Base/HostError.h"

#include <utility>
#include <vector>

namespace SonaroHost
{

// What graphs have opened. The graphs alone keep it open.
class FileMedia::OpenSources
{
public:
	SN::InterfaceRef<SN::IAudioSource> Open(
		std::filesystem::path const& inPath, SN::FrameRate const& inCountingRate)
	{
		SN::InterfaceRef<AudioFileSource> const source = AudioFileSource::Open(inPath, inCountingRate);
		std::erase_if(mSources, [](auto const& inSource) { return inSource.expired(); });
		mSources.push_back(source.GetUnknown());
		return source;
	}

	std::optional<HostError> GetFailure() const
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

private:
	std::vector<std::weak_ptr<SN::Unknown>> mSources;
};

FileMedia::FileMedia()
	: mSources(std::make_shared<OpenSources>())
{
}

std::shared_ptr<Sequence::Media const> FileMedia::Get(
	std::filesystem::path const& inPath, std::filesystem::path const& inShownPath)
{
	auto const [place, isNew] = mFiles.try_emplace(inPath);
	File& file = place->second;
	if (isNew)
	{
		file.mInfo.mPath = inShownPath;
		mShownFiles.try_emplace(inShownPath, &file);
		try
		{
			file.mInfo = InspectAudioFile(inPath);
			file.mInfo.mPath = inShownPath;
			AudioFileInfo const& info = file.mInfo;
			file.mMedia = std::make_shared<Sequence::Media>(Sequence::Media{inPath.filename().string(),
				static_cast<double>(info.mSampleRate), info.mFrames, info.mLayout,
				[sources = mSources, inPath](SN::FrameRate const& inCountingRate)
				{ return sources->Open(inPath, inCountingRate); }});
		}
		catch (HostError const& error)
		{
			file.mError = NameAsShown(error);
		}
	}
	if (!file.mMedia)
	{
		throw *file.mError;
	}
	return file.mMedia;
}

std::optional<HostError> FileMedia::GetFailure() const
{
	auto const failure = mSources->GetFailure();
	return failure ? std::optional(NameAsShown(*failure)) : std::nullopt;
}

AudioFileInfo const* FileMedia::FindInfo(std::filesystem::path const& inShownPath) const
{
	auto const found = mShownFiles.find(inShownPath);
	return found != mShownFiles.end() && found->second->mMedia ? &found->second->mInfo : nullptr;
}

HostError FileMedia::NameAsShown(HostError const& inError) const
{
	HostError::Parts parts = inError.GetParts();
	if (auto const found = mFiles.find(parts.mFile); found != mFiles.end())
	{
		parts.mFile = found->second.mInfo.mPath;
	}
	return HostError(inError.GetKind(), std::move(parts));
}

} // namespace SonaroHost
