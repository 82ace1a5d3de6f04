#pragma once

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/AudioFileSource.h"
#include "SonaroHost/Media/MediaDamage.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace SonaroHost
{

class DecodedSpool;

// What the readers of several graphs share: the decoded samples of files that can only be decoded from the start.
//
// Threads  One at a time.
class SharedSpools
{
public:
	// Null where there is no room for temporary files. inInfo: one of several copies, which share their mDamage; so do
	// recordings that are stretched out of one file.
	std::shared_ptr<DecodedSpool> Find(AudioFileInfo const& inInfo, std::int64_t inBlockFrames);

private:
	// They live as long as somebody reads them.
	std::map<std::tuple<MediaDamage const*, std::optional<Stretch>, std::optional<Denoise>>,
		std::weak_ptr<DecodedSpool>>
		mSpools;
};

// The sources that one graph has opened. What they find damaged stays theirs until the end of this, and is then added
// to what is known of the files.
//
// Threads  One at a time.
class SourceGroup
{
public:
	explicit SourceGroup(std::shared_ptr<SharedSpools> inSpools);
	~SourceGroup();
	SourceGroup(SourceGroup const&) = delete;
	SourceGroup& operator=(SourceGroup const&) = delete;

	// Throws a HostError when the file cannot be opened.
	SN::InterfaceRef<AudioFileSource> Open(AudioFileInfo const& inInfo, SN::FrameRate const& inCountingRate);

	std::optional<HostError> FindFailure() const;
	std::uint64_t CountMissedFrames() const;
	// What was found in the file of these infos.
	std::vector<MediaDamage::Stretch> GetDamage(AudioFileInfo const& inInfo) const;

private:
	struct Opened
	{
		SN::InterfaceRef<AudioFileSource> mSource;
		// What all know of the file.
		std::shared_ptr<MediaDamage> mKnown;
	};

	std::shared_ptr<SharedSpools> mSpools;
	std::vector<Opened> mOpened;
};

} // namespace SonaroHost
