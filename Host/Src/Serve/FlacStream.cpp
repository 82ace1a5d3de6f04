#include "FlacStream.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace SonaroHost::Serve
{

namespace
{

// Frames that are rendered and encoded at a time.
constexpr std::int64_t kFlacFrames = 16384;

// Writes the number of samples into the block STREAMINFO, which begins after the four letters and its own head (RFC 9639,
// section 8.2): the lower 36 bits of 8 bytes, the higher byte first.
void WriteFlacLength(std::string& ioHeader, std::int64_t inFrames)
{
	constexpr std::size_t kOffset = 4 + 4 + 10;
	constexpr std::size_t kBytes = 8;
	constexpr std::uint64_t kMask = (std::uint64_t{1} << 36) - 1;
	if (ioHeader.size() < kOffset + kBytes || static_cast<std::uint64_t>(inFrames) > kMask)
	{
		return;
	}
	std::uint64_t field = 0;
	for (std::size_t i = 0; i < kBytes; ++i)
	{
		field = field << 8 | static_cast<unsigned char>(ioHeader[kOffset + i]);
	}
	field = (field & ~kMask) | static_cast<std::uint64_t>(inFrames);
	for (std::size_t i = kBytes; i-- > 0; field >>= 8)
	{
		ioHeader[kOffset + i] = static_cast<char>(field & 0xff);
	}
}

} // namespace

// Keeps what was not taken yet. What the encoder goes back for at its end has gone.
class FlacStream::Target final : public EncoderTarget
{
public:
	std::int64_t Write(void const* inBytes, std::int64_t inCount) override
	{
		if (mPosition == mLength)
		{
			mBytes.append(static_cast<char const*>(inBytes), static_cast<std::size_t>(inCount));
			mLength += inCount;
		}
		mPosition += inCount;
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

	std::string Take(std::int64_t inFrames)
	{
		if (!std::exchange(mHasHeader, true))
		{
			WriteFlacLength(mBytes, inFrames);
		}
		return std::exchange(mBytes, {});
	}

private:
	std::string mBytes;
	std::int64_t mPosition = 0;
	std::int64_t mLength = 0;
	bool mHasHeader = false;
};

FlacStream::FlacStream(std::shared_ptr<GraphPool> inPool, LeftOut inLeftOut, EncoderFormat const& inFormat,
	std::int64_t inFirstFrame)
	: mPool(std::move(inPool)),
	  mLeftOut(std::move(inLeftOut)),
	  mNext(inFirstFrame),
	  mEnd(inFirstFrame + inFormat.mFrames),
	  mTarget(std::make_unique<Target>()),
	  mEncoder(std::make_unique<AudioEncoder>(*mTarget, "the mix", inFormat))
{
}

FlacStream::~FlacStream() = default;

std::string FlacStream::Read(Clock::time_point inDeadline)
{
	std::int64_t const frames = mEncoder ? mEncoder->GetFrames() + mEnd - mNext : 0;
	std::string bytes;
	while (mEncoder && bytes.empty())
	{
		std::int64_t const count = std::min(kFlacFrames, mEnd - mNext);
		mPool->Render(mLeftOut, {mNext, count}, inDeadline,
			[this](dsp::AudioBuffer const& inBlock) { mEncoder->Write(inBlock); });
		mNext += count;
		if (mNext == mEnd)
		{
			mEncoder->Complete();
			mEncoder.reset();
		}
		bytes = mTarget->Take(frames);
	}
	return bytes;
}

} // namespace SonaroHost::Serve
