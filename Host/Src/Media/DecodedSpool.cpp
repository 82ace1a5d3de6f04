#include "DecodedSpool.h"

#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

namespace SonaroHost
{

DecodedSpool::DecodedSpool(std::filesystem::path inPath, std::unique_ptr<SoundDecoder> inDecoder)
	: mPath(std::move(inPath)),
	  mDecoder(std::move(inDecoder)),
	  mFile(MakeUnnamedFile())
{
	if (!mFile)
	{
		ThrowFailure();
	}
}

std::int64_t DecodedSpool::Read(std::int64_t inPosition, float* outSamples, std::int64_t inFrames)
{
	ExtendTo(inPosition + inFrames);
	auto const channels = static_cast<std::size_t>(mDecoder->GetNumChannels());
	std::int64_t const count = std::clamp<std::int64_t>(mDecoder->GetPosition() - inPosition, 0, inFrames);
	std::size_t const frameSize = channels * sizeof(float);
	static_assert(sizeof(long) == sizeof(std::int64_t), "positions in the spool need 64 bits");
	if (std::fseek(mFile.get(), inPosition * static_cast<long>(frameSize), SEEK_SET) != 0 ||
		std::fread(outSamples, frameSize, static_cast<std::size_t>(count), mFile.get()) !=
			static_cast<std::size_t>(count))
	{
		ThrowFailure();
	}
	return count;
}

void DecodedSpool::ExtendTo(std::int64_t inEnd)
{
	constexpr std::int64_t kChunk = 16384;
	if (mDecoder->GetPosition() >= inEnd)
	{
		return;
	}
	auto const channels = static_cast<std::size_t>(mDecoder->GetNumChannels());
	std::vector<float> samples(static_cast<std::size_t>(kChunk) * channels);
	std::fseek(mFile.get(), 0, SEEK_END);
	while (mDecoder->GetPosition() < inEnd)
	{
		auto const count = static_cast<std::size_t>(mDecoder->Read(samples.data(), kChunk));
		if (std::fwrite(samples.data(), channels * sizeof(float), count, mFile.get()) != count)
		{
			ThrowFailure();
		}
		if (count < static_cast<std::size_t>(kChunk))
		{
			return;
		}
	}
}

void DecodedSpool::ThrowFailure() const
{
	throw HostError(HostError::Kind::kInput,
		{mPath, {},
			"its decoded samples cannot be stored in a temporary file: " +
				std::generic_category().message(errno),
			"set TMPDIR to a folder with more space, or convert the file to WAV, which needs none"});
}

} // namespace SonaroHost
