#pragma once

#include "Sequence/MemoryMedia.h"
#include "SonaroHost/Sequence/FileMedia.h"
#include "SonaroHost/Serve/ProgrammeReader.h"
#include "Terminal/Caller.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace SonaroPython
{

// The media of a sequence: files, arrays and functions.
struct SequenceMedia
{
	std::shared_ptr<SonaroHost::FileMedia> mFiles = std::make_shared<SonaroHost::FileMedia>();
	std::shared_ptr<MediaFailures> mFailures = std::make_shared<MediaFailures>();
	// What is read of mFiles.
	std::vector<std::filesystem::path> mPaths;
};

// A sequence of which samples are read at any place.
// Threads: any, without the interpreter's lock.
class OpenSequence
{
public:
	// inFrames: without them it ends with its last item. Throws a HostError for what contradicts itself.
	OpenSequence(std::shared_ptr<SonaroHost::Sequence::Description const> inDescription, int inSampleRate,
		std::optional<std::int64_t> const& inFrames, SequenceMedia const& inMedia, unsigned inReaders);

	SonaroCommand::CalledProgramme const& GetProgramme() const { return mProgramme; }
	std::int64_t GetFrames() const { return mProgramme.mProgramme.mFrames; }
	unsigned GetNumChannels() const
	{
		return static_cast<unsigned>(mProgramme.mProgramme.GetLayout().size());
	}
	// inTrack: the number of the track that is heard alone, from 1 on; 0 for the mix.
	void Read(std::int64_t inFirst, std::int64_t inFrames, unsigned inTrack,
		std::span<float* const> outChannels, std::function<void()> const& inAfterBlock);
	MediaFailures& GetFailures() { return *mFailures; }

private:
	std::shared_ptr<MediaFailures> mFailures;
	SonaroCommand::CalledProgramme mProgramme;
	SonaroHost::Serve::ProgrammeReader mReader;
};

} // namespace SonaroPython
