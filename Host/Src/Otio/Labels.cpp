#include "SonaroHost/Otio/Labels.h"

#include <charconv>
#include <cstddef>

namespace SonaroHost::Otio
{

std::string MakeLabel(std::string const& inName, std::string const& inKind, std::string_view inPlace)
{
	if (!inName.empty())
	{
		return inName;
	}
	std::string_view const last = inPlace.substr(inPlace.rfind('/') + 1);
	std::size_t index = 0;
	auto const [end, error] = std::from_chars(last.data(), last.data() + last.size(), index);
	bool const isChild = error == std::errc() && end == last.data() + last.size();
	return isChild ? inKind + " " + std::to_string(index + 1) : inKind;
}

std::string GetLabel(Track const& inTrack)
{
	char const* const letter = inTrack.IsAudio() ? " (A)" : inTrack.mKind == "Video" ? " (V)" : "";
	return inTrack.mName.empty() ? MakeLabel({}, "track", inTrack.mPlace) + letter : inTrack.mName;
}

std::string GetLabel(Stack const& inStack)
{
	return MakeLabel(inStack.mName, "stack", inStack.mPlace);
}

std::string GetLabel(Clip const& inClip)
{
	return MakeLabel(inClip.mName, "clip", inClip.mPlace);
}

std::string AppendLabel(std::string const& inAround, std::string const& inLabel)
{
	return inAround.empty() ? inLabel : inAround + " / " + inLabel;
}

} // namespace SonaroHost::Otio
