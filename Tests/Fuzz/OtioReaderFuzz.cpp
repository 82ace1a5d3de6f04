#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Otio/Reader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace
{

using namespace SonaroHost;

// Whatever is read keeps what the model promises.
void Check(bool inHolds)
{
	if (!inHolds)
	{
		std::abort();
	}
}

void CheckTime(Otio::RationalTime const& inTime)
{
	Check(inTime.mRate >= Otio::kMinRate && inTime.mRate <= Otio::kMaxRate);
	auto const seconds = Otio::ToSeconds(inTime).ToDouble();
	Check(seconds >= -1.001 * Otio::kMaxSeconds && seconds <= 1.001 * Otio::kMaxSeconds);
}

void CheckItem(Otio::Item const& inItem)
{
	if (inItem.mSourceRange)
	{
		CheckTime(inItem.mSourceRange->mStartTime);
		CheckTime(inItem.mSourceRange->mDuration);
		Check(inItem.mSourceRange->mDuration.mValue >= 0.0);
	}
	for (Otio::MixSettings const& settings : {inItem.GetSettings()})
	{
		for (auto const* const curve : {&settings.mGain, &settings.mPan, &settings.mForeign.mGain})
		{
			Ratio last = Ratio::FromDouble(-2.0 * Otio::kMaxSeconds);
			for (std::size_t i = 0; *curve && i < (*curve)->mKeyframes.size(); ++i)
			{
				Ratio const time = Otio::ToSeconds((*curve)->mKeyframes[i].mTime);
				Check(last < time);
				last = time;
			}
		}
	}
}

void CheckChildren(std::vector<Otio::Composable> const& inChildren, bool inIsTrack)
{
	bool wasTransition = false;
	for (Otio::Composable const& child : inChildren)
	{
		bool const isTransition = child.As<Otio::Transition>() != nullptr;
		Check(!isTransition || (inIsTrack && !wasTransition));
		wasTransition = isTransition;
		if (Otio::Item const* const item = child.AsItem())
		{
			CheckItem(*item);
		}
		if (auto const* const track = child.As<Otio::Track>())
		{
			CheckChildren(track->mChildren, true);
		}
		else if (auto const* const stack = child.As<Otio::Stack>())
		{
			CheckChildren(stack->mChildren, false);
		}
	}
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize)
{
	try
	{
		auto const document =
			Otio::ReadDocument({reinterpret_cast<char const*>(inData), inSize}, "fuzz.otio");
		Check(!document.mTimelines.empty());
		for (Otio::Timeline const& timeline : document.mTimelines)
		{
			CheckItem(timeline.mTracks);
			CheckChildren(timeline.mTracks.mChildren, false);
		}
	}
	catch (HostError const& error)
	{
		std::string_view const message = error.what();
		Check(error.GetKind() == HostError::Kind::kInput && message.starts_with("'fuzz.otio'"));
		Check(message.find('\n') == std::string_view::npos && message.size() < 2000);
	}
	return 0;
}
