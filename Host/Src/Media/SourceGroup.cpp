#include "SourceGroup.h"

#include "DecodedSpool.h"

#include <utility>

namespace SonaroHost
{

std::shared_ptr<DecodedSpool> SharedSpools::Find(AudioFileInfo const& inInfo, std::int64_t inBlockFrames)
{
	std::weak_ptr<DecodedSpool>& known = mSpools[{inInfo.mDamage.get(), inInfo.mStretch, inInfo.mDenoise}];
	auto spool = known.lock();
	if (!spool)
	{
		try
		{
			spool = std::make_shared<DecodedSpool>(inInfo, inBlockFrames);
		}
		catch (HostError const&)
		{
			return nullptr;
		}
		known = spool;
	}
	return spool;
}

SourceGroup::SourceGroup(std::shared_ptr<SharedSpools> inSpools)
	: mSpools(std::move(inSpools))
{
}

SourceGroup::~SourceGroup()
{
	for (Opened const& opened : mOpened)
	{
		for (MediaDamage::Stretch const& stretch : opened.mSource->GetInfo().mDamage->Get())
		{
			opened.mKnown->Add(stretch);
		}
	}
}

SN::InterfaceRef<AudioFileSource> SourceGroup::Open(
	AudioFileInfo const& inInfo, SN::FrameRate const& inCountingRate)
{
	AudioFileInfo own = inInfo;
	own.mDamage = std::make_shared<MediaDamage>();
	auto const findSpool = [&](std::int64_t inBlockFrames) { return mSpools->Find(inInfo, inBlockFrames); };
	auto const source = zorvcore::classref::MakeObject<AudioFileSource>(
		std::make_unique<AudioFileReader>(std::move(own), findSpool), inCountingRate);
	mOpened.push_back({source, inInfo.mDamage});
	return source;
}

std::optional<HostError> SourceGroup::FindFailure() const
{
	for (Opened const& opened : mOpened)
	{
		if (auto failure = opened.mSource->GetFailure())
		{
			return failure;
		}
	}
	return std::nullopt;
}

std::uint64_t SourceGroup::CountMissedFrames() const
{
	std::uint64_t frames = 0;
	for (Opened const& opened : mOpened)
	{
		frames += opened.mSource->GetMissedFrames();
	}
	return frames;
}

std::vector<MediaDamage::Stretch> SourceGroup::GetDamage(AudioFileInfo const& inInfo) const
{
	MediaDamage damage;
	for (Opened const& opened : mOpened)
	{
		if (opened.mKnown == inInfo.mDamage)
		{
			for (MediaDamage::Stretch const& stretch : opened.mSource->GetInfo().mDamage->Get())
			{
				damage.Add(stretch);
			}
		}
	}
	return damage.Get();
}

} // namespace SonaroHost
