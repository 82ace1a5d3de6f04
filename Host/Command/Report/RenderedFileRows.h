#pragma once

#include "Json.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Render/OutputRequest.h"
#include "SonaroHost/Render/RenderSummary.h"
#include "SonaroHost/Sequence/Description.h"

#include <optional>
#include <string>

namespace SonaroCommand
{

// What a render has written, of sound files and timelines alike. Samples are those of the programme.
Json ListFiles(
	SonaroHost::RenderSummary const& inFiles, SN::AudioChannelLayout const& inLayout, int inSampleRate);
// The loudness of the mix and how it was normalized, if they are known.
void AddMix(Json& ioJson, SonaroHost::RenderSummary const& inFiles, SonaroHost::OutputLevels const& inLevels);

// Who hears the mix with two ears, where somebody does.
void AddBinaural(Json& ioJson, std::optional<SonaroHost::Sequence::BinauralOutput> const& inBinaural);

// What keeps the render from being shared by threads, where something does.
void AddOneRun(Json& ioJson, SonaroHost::RenderSummary const& inFiles);

// Lines for people, with their ends. inShown: what the file is called.
std::string DescribeFormat(std::string const& inShown, SonaroHost::RenderedFile const& inFile,
	SonaroHost::RenderSummary const& inFiles, SN::AudioChannelLayout const& inLayout);
// Empty where nobody hears it with two ears.
std::string DescribeBinaural(std::optional<SonaroHost::Sequence::BinauralOutput> const& inBinaural);
std::string DescribePeak(SonaroHost::RenderedFile const& inFile);
// Empty where nothing was normalized.
std::string DescribeNormalizing(SonaroHost::RenderSummary const& inFiles);
// Empty where threads could share the render.
std::string DescribeOneRun(SonaroHost::RenderSummary const& inFiles);

// Warns of samples that were clipped, and of a loudness that was not reached.
void WarnOfLevels(SonaroHost::RenderSummary const& inFiles);

// A line for each file whose noise was learned.
std::string DescribeLearnedNoise(SonaroHost::RenderSummary const& inFiles);

// Warns of files whose noise could not be learned.
void WarnOfUnlearnedNoise(SonaroHost::RenderSummary const& inFiles);
// Warns of media in which damage was found.
void WarnOfDamage(SonaroHost::RenderSummary const& inFiles);
// Of samples without which the loudness of something was measured; its name in quotes.
void WarnOfLeftOut(std::string const& inQuoted, std::optional<SonaroHost::LoudnessReading> const& inReading);

} // namespace SonaroCommand
