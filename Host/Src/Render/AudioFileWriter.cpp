#include "SonaroHost/Render/AudioFileWriter.h"

#include "Encoder/AudioEncoder.h"

#include "SonaroHost/Files/OutputFile.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost
{

// A file, and what writes into it.
struct AudioFileWriter::Encoding final : EncoderTarget
{
	Encoding(std::filesystem::path const& inPath, EncoderFormat const& inFormat)
		: mFile(inPath),
		  mEncoder(*this, inPath, inFormat)
	{
	}

	std::int64_t Write(void const* inBytes, std::int64_t inCount) override
	{
		return mFile.Write(inBytes, inCount);
	}
	std::int64_t Read(void* outBytes, std::int64_t inCount) override { return mFile.Read(outBytes, inCount); }
	std::int64_t Seek(std::int64_t inOffset, int inOrigin) override { return mFile.Seek(inOffset, inOrigin); }
	std::int64_t Tell() override { return mFile.Tell(); }
	std::int64_t GetLength() override { return mFile.GetLength(); }
	void CheckWritten() override { mFile.CheckWritten(); }

	OutputFile mFile;
	AudioEncoder mEncoder;
	bool mIsComplete = false;
};

AudioFileWriter::AudioFileWriter(std::filesystem::path const& inPath, OutputFormat const& inFormat,
	int inSampleRate, zorvmediatypes::AudioChannelLayout const& inLayout, std::int64_t inFrames,
	std::optional<std::int64_t> inTimeReference)
	: mEncoding(std::make_unique<Encoding>(
		  inPath, EncoderFormat{inFormat, inSampleRate, inLayout, inFrames, inTimeReference}))
{
}

AudioFileWriter::~AudioFileWriter() = default;

void AudioFileWriter::Write(dsp::AudioBuffer const& inBuffer)
{
	mEncoding->mEncoder.Write(inBuffer);
}

void AudioFileWriter::Complete()
{
	if (mEncoding->mIsComplete)
	{
		return;
	}
	mEncoding->mIsComplete = true;
	mEncoding->mEncoder.Complete();
	mEncoding->mFile.Close();
}

void AudioFileWriter::Finish(bool inReplaces)
{
	Complete();
	mEncoding->mFile.Commit(inReplaces);
}

std::int64_t AudioFileWriter::GetFrames() const
{
	return mEncoding->mEncoder.GetFrames();
}

std::int64_t AudioFileWriter::GetClippedSamples() const
{
	return mEncoding->mEncoder.GetClippedSamples();
}

} // namespace SonaroHost
