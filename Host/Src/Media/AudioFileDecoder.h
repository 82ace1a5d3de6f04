#pragma once

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <memory>

namespace SonaroHost
{

class StretchedFile;

// One pass of libsndfile over a sound file, as interleaved floats. It decodes forward; how exact a seek
// is depends on the codec, and is its user's business.
class AudioFileDecoder
{
public:
	// Throws a HostError when the file cannot be read as sound.
	explicit AudioFileDecoder(std::filesystem::path const& inPath);
	~AudioFileDecoder();
	AudioFileDecoder(AudioFileDecoder const&) = delete;
	AudioFileDecoder& operator=(AudioFileDecoder const&) = delete;

	SF_INFO const& GetFormat() const noexcept { return mFormat; }
	SNDFILE* GetHandle() const noexcept { return mFile.get(); }

	// False when the length in GetFormat is a guess or none at all.
	bool StatesLength() const noexcept { return mStatesLength; }

	// The frame that is decoded next.
	std::int64_t GetPosition() const noexcept { return mPosition; }

	// Decodes the next inFrames frames. Returns how many there were: fewer only at the end, or where
	// the file is damaged.
	std::int64_t Read(float* outSamples, std::int64_t inFrames);

	bool SeekTo(std::int64_t inFrame);

private:
	struct Closer
	{
		void operator()(SNDFILE* inFile) const { sf_close(inFile); }
	};

	std::unique_ptr<StretchedFile> mStretchedFile;
	SF_INFO mFormat{};
	std::unique_ptr<SNDFILE, Closer> mFile;
	std::int64_t mPosition = 0;
	bool mStatesLength = true;
};

} // namespace SonaroHost
