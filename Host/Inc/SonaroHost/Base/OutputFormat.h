#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace SonaroHost
{

enum class OutputContainer
{
	kWav,
	kAiff,
	kFlac,
	kCaf,
};

enum class OutputSamples
{
	kInteger16,
	kInteger24,
	kFloat32,
};

enum class Dither
{
	kNone,
	// Triangular noise of two steps from peak to peak: rounding errors become a steady noise that does
	// not depend on the signal.
	kTriangular,
};

// What a rendered file is.
struct OutputFormat
{
	OutputContainer mContainer = OutputContainer::kWav;
	OutputSamples mSamples = OutputSamples::kFloat32;
	// How integer samples are rounded.
	Dither mDither = Dither::kNone;
};

// Finds a container by its name or by the ending of a file name, in upper or lower case: "wav", "wave", "aif", "aiff",
// "aifc", "flac", "caf".
std::optional<OutputContainer> FindContainer(std::string_view inName);
std::optional<OutputContainer> FindContainerByEnding(std::filesystem::path const& inPath);

// What a container holds when nothing else is asked for: 32-bit float, and 24 bits in FLAC, which has no
// floats.
OutputSamples GetDefaultSamples(OutputContainer inContainer);

// Bits of an integer sample; 0 for floats.
int GetIntegerBits(OutputSamples inSamples);
// Bytes of a sample.
int GetSampleSize(OutputSamples inSamples);

// "WAV" and "16-bit", for people.
std::string GetName(OutputContainer inContainer);
std::string GetName(OutputSamples inSamples);

// The usual choice: triangular for 16 bits, since the rounding error is audible there; none for 24 bits,
// where noise of the converters hides it; none either where nothing is rounded because the samples that
// come (inSourceBits, 0 for floats) fit and their level stays.
Dither ChooseDither(OutputSamples inSamples, int inSourceBits, bool inLevelStays);

} // namespace SonaroHost
