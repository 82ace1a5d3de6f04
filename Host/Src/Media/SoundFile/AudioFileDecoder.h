#pragma once

#include "Media/SoundDecoder.h"

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

namespace SonaroHost
{

class StretchedFile;

// One pass of libsndfile over a sound file.
class AudioFileDecoder final : public SoundDecoder
{
public:
	// Throws a HostError when the file cannot be read as sound.
	explicit AudioFileDecoder(std::filesystem::path const& inPath);
	~AudioFileDecoder() override;

	SF_INFO const& GetFormat() const noexcept { return mFormat; }
	SNDFILE* GetHandle() const noexcept { return mFile.get(); }

	// False when the length in GetFormat is a guess or none at all.
	bool StatesLength() const noexcept { return mStatesLength; }
	// Whether it says that it is a sound field of the first order: W, X, Y and Z, in the order of FuMa. W, which the file has
	// 3 dB softer, is read at the scale SN3D; that of the others is the same.
	bool IsField() const noexcept { return mIsField; }

	unsigned GetNumChannels() const noexcept override { return static_cast<unsigned>(mFormat.channels); }
	bool IsSeekExact() const noexcept override;
	std::int64_t GetPrerollFrames() const noexcept override;
	std::int64_t GetPosition() const noexcept override { return mPosition; }
	std::int64_t Read(float* outSamples, std::int64_t inFrames) override;
	bool SeekTo(std::int64_t inFrame) override;

private:
	struct Closer
	{
		void operator()(SNDFILE* inFile) const { sf_close(inFile); }
	};

	// At most so many frames as libsndfile gives at once; 0 or less at the end and where it fails.
	std::int64_t ReadSome(float* outSamples, std::int64_t inFrames);

	std::unique_ptr<StretchedFile> mStretchedFile;
	SF_INFO mFormat{};
	std::unique_ptr<SNDFILE, Closer> mFile;
	std::int64_t mPosition = 0;
	bool mStatesLength = true;
	bool mIsField = false;
	// Of 16-bit PCM before it is converted; empty for all else.
	std::vector<short> mShorts;
};

} // namespace SonaroHost
