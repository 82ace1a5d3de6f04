#include "SonaroHost/Base/OutputFormat.h"

#include <algorithm>
#include <cctype>

namespace SonaroHost
{

std::optional<OutputContainer> FindContainer(std::string_view inName)
{
	struct Entry
	{
		std::string_view mName;
		OutputContainer mContainer;
	};
	constexpr Entry kEntries[] = {
		{"wav", OutputContainer::eWav},
		{"wave", OutputContainer::eWav},
		{"aif", OutputContainer::eAiff},
		{"aiff", OutputContainer::eAiff},
		{"aifc", OutputContainer::eAiff},
		{"flac", OutputContainer::eFlac},
		{"caf", OutputContainer::eCaf},
	};
	std::string name(inName);
	std::transform(name.begin(), name.end(), name.begin(),
		[](unsigned char inCharacter) { return static_cast<char>(std::tolower(inCharacter)); });
	auto const found = std::find_if(std::begin(kEntries), std::end(kEntries),
		[&](Entry const& inEntry) { return inEntry.mName == name; });
	return found == std::end(kEntries) ? std::nullopt : std::optional(found->mContainer);
}

std::optional<OutputContainer> FindContainerByEnding(std::filesystem::path const& inPath)
{
	std::string const ending = inPath.extension().string();
	return ending.empty() ? std::nullopt : FindContainer(std::string_view(ending).substr(1));
}

OutputSamples GetDefaultSamples(OutputContainer inContainer)
{
	return inContainer == OutputContainer::eFlac ? OutputSamples::eInteger24 : OutputSamples::eFloat32;
}

int GetIntegerBits(OutputSamples inSamples)
{
	switch (inSamples)
	{
	case OutputSamples::eInteger16:
		return 16;
	case OutputSamples::eInteger24:
		return 24;
	case OutputSamples::eFloat32:
		break;
	}
	return 0;
}

int GetSampleSize(OutputSamples inSamples)
{
	int const bits = GetIntegerBits(inSamples);
	return bits == 0 ? 4 : bits / 8;
}

std::string GetName(OutputContainer inContainer)
{
	switch (inContainer)
	{
	case OutputContainer::eWav:
		return "WAV";
	case OutputContainer::eAiff:
		return "AIFF";
	case OutputContainer::eFlac:
		return "FLAC";
	case OutputContainer::eCaf:
		break;
	}
	return "CAF";
}

std::string GetName(OutputSamples inSamples)
{
	int const bits = GetIntegerBits(inSamples);
	return bits == 0 ? "32-bit float" : std::to_string(bits) + "-bit";
}

Dither ChooseDither(OutputSamples inSamples, int inSourceBits, bool inLevelStays)
{
	bool const losesNothing = inLevelStays && inSourceBits > 0 && inSourceBits <= GetIntegerBits(inSamples);
	return inSamples == OutputSamples::eInteger16 && !losesNothing ? Dither::eTriangular : Dither::eNone;
}

} // namespace SonaroHost
