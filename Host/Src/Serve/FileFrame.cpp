#include "FileFrame.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace SonaroHost::Serve
{

namespace
{

// More than any header has.
constexpr std::int64_t kMostHeaderBytes = 65536;
constexpr std::int64_t kZeroBytes = std::int64_t{1} << 20;

// Keeps the beginning and the end of what is written, and counts what lies between: the samples.
class FrameTarget final : public EncoderTarget
{
public:
	std::int64_t Write(void const* inBytes, std::int64_t inCount) override
	{
		auto const* const bytes = static_cast<char const*>(inBytes);
		if (mPosition < mHeaderBytes)
		{
			Put(mHeader, mPosition, bytes, inCount);
		}
		else if (mWritesSamples)
		{
			mSampleBytes += inCount;
		}
		else
		{
			Put(mTrailer, mPosition - mHeaderBytes - mSampleBytes, bytes, inCount);
		}
		mPosition += inCount;
		mLength = std::max(mLength, mPosition);
		return inCount;
	}
	std::int64_t Read(void*, std::int64_t) override { return 0; }
	std::int64_t Seek(std::int64_t inOffset, int inOrigin) override
	{
		mPosition = inOffset + (inOrigin == SEEK_SET ? 0 : inOrigin == SEEK_CUR ? mPosition : mLength);
		return mPosition;
	}
	std::int64_t Tell() override { return mPosition; }
	std::int64_t GetLength() override { return mLength; }
	void CheckWritten() override {}

	// From then on until EndSamples, samples are written.
	void BeginSamples()
	{
		mHeaderBytes = mLength;
		mWritesSamples = true;
	}
	void EndSamples() { mWritesSamples = false; }

	FileFrame TakeFrame() { return {std::move(mHeader), mSampleBytes, std::move(mTrailer)}; }

private:
	static void Put(std::string& ioText, std::int64_t inOffset, char const* inBytes, std::int64_t inCount)
	{
		auto const offset = static_cast<std::size_t>(inOffset);
		auto const count = static_cast<std::size_t>(inCount);
		ioText.resize(std::max(ioText.size(), offset + count));
		std::copy_n(inBytes, count, ioText.begin() + static_cast<std::ptrdiff_t>(offset));
	}

	std::string mHeader;
	std::string mTrailer;
	std::int64_t mHeaderBytes = kMostHeaderBytes;
	std::int64_t mSampleBytes = 0;
	std::int64_t mPosition = 0;
	std::int64_t mLength = 0;
	bool mWritesSamples = false;
};

} // namespace

FileFrame MakeFileFrame(EncoderFormat const& inFormat)
{
	FrameTarget target;
	AudioEncoder encoder(target, "the mix", inFormat);
	std::int64_t const frameBytes =
		static_cast<std::int64_t>(inFormat.mLayout.size()) * GetSampleSize(inFormat.mFormat.mSamples);
	// The header comes with the first samples.
	encoder.WriteHeader();
	target.BeginSamples();
	std::int64_t const wholeBytes = std::max(kZeroBytes / frameBytes, std::int64_t{1}) * frameBytes;
	std::vector<char> const zeros(static_cast<std::size_t>(wholeBytes));
	for (std::int64_t left = inFormat.mFrames * frameBytes; left > 0;)
	{
		std::int64_t const count = std::min(left, wholeBytes);
		encoder.WriteBytes(zeros.data(), count);
		left -= count;
	}
	target.EndSamples();
	encoder.Complete();
	return target.TakeFrame();
}

} // namespace SonaroHost::Serve
