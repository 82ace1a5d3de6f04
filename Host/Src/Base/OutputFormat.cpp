#include "SonaroHost/Base/OutputFormat.h"

#include "SonaroHost/Base/PrintableText.h"

#include <algorithm>

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
		{"wav", OutputContainer::kWav},
		{"wave", OutputContainer::kWav},
		{"aif", OutputContainer::kAiff},
		{"aiff", OutputContainer::kAiff},
		{"aifc", OutputContainer::kAiff},
		{"flac", OutputContainer::kFlac},
		{"caf", OutputContainer::kCaf},
	};
	std::string const name = ToLower(std::string(inName));
	auto const found = std::ranges::find(kEntries, name, &Entry::mName);
	return found == std::end(kEntries) ? std::nullopt : std::optional(found->mContainer);
}

std::optional<OutputContainer> FindContainerByEnding(std::filesystem::path const& inPath)
{
	std::string const ending = GetPathText(inPath.extension());
	return ending.empty() ? std::nullopt : FindContainer(std::string_view(ending).substr(1));
}

OutputSamples GetDefaultSamples(OutputContainer inContainer)
{
	return inContainer == OutputContainer::kFlac ? OutputSamples::kInteger24 : OutputSamples::kFloat32;
}

int GetIntegerBits(OutputSamples inSamples)
{
	return inSamples == OutputSamples::kInteger16 ? 16 : inSamples == OutputSamples::kInteger24 ? 24 : 0;
}

int GetSampleSize(OutputSamples inSamples)
{
	int const bits = GetIntegerBits(inSamples);
	return bits == 0 ? 4 : bits / 8;
}

std::string GetName(OutputContainer inContainer)
{
	constexpr char const* kNames[] = {"WAV", "AIFF", "FLAC", "CAF"};
	return kNames[static_cast<std::size_t>(inContainer)];
}

std::string GetName(OutputSamples inSamples)
{
	int const bits = GetIntegerBits(inSamples);
	return bits == 0 ? "32-bit float" : std::to_string(bits) + "-bit";
}

Dither ChooseDither(OutputSamples inSamples, int inSourceBits, bool inLevelStays)
{
	bool const losesNothing = inLevelStays && inSourceBits > 0 && inSourceBits <= GetIntegerBits(inSamples);
	return inSamples == OutputSamples::kInteger16 && !losesNothing ? Dither::kTriangular : Dither::kNone;
}

} // namespace SonaroHost
