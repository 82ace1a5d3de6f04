#include "SonaroHost/Media/AudioFileReader.h"

#include "DecodedSpool.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Media/AudioFileInspection.h"
#include "SoundDecoders.h"
#include "Stretch/StretchedInfo.h"

#include <algorithm>
#include <string>
#include <utility>

namespace SonaroHost
{

namespace
{

// A block of at most so many floats, a quarter of a megabyte, and of so few frames that it is used where it
// was decoded, in the caches, also of many files.
constexpr std::int64_t kBlockSamples = 65536;
constexpr std::int64_t kLargestBlockFrames = 2048;

// Asking for the state of a file takes a seventh of the time that a block takes in a whole export.
constexpr int kBlocksPerCheck = 16;

void CheckState(AudioFileInfo const& inInfo, std::filesystem::path const& inReadablePath)
{
	if (inInfo.mState && ReadFileState(inReadablePath) != inInfo.mState)
	{
		RefuseInput(inInfo.mPath, "has changed while it was being read", "run the command again");
	}
}

// Where a file can be opened that has not changed.
std::filesystem::path FindUnchanged(AudioFileInfo const& inInfo)
{
	std::filesystem::path const path = GetReadablePath(inInfo.mPath);
	CheckState(inInfo, path);
	return path;
}

} // namespace

AudioFileReader::AudioFileReader(std::filesystem::path const& inPath, unsigned inStream)
	: AudioFileReader(InspectAudioFile(inPath, inStream))
{
}

AudioFileReader::AudioFileReader(AudioFileInfo inInfo, SpoolFinder const& inFindSpool)
	: mInfo(std::move(inInfo)),
	  mReadablePath(FindUnchanged(mInfo)),
	  mDecoder(OpenSoundDecoder(mInfo)),
	  mBlockFrames(std::min(kLargestBlockFrames, kBlockSamples / mInfo.GetNumChannels()))
{
	for (Block& block : mBlocks)
	{
		block.mSamples.resize(static_cast<std::size_t>(mBlockFrames * mInfo.GetNumChannels()));
	}
	if (inFindSpool && !mDecoder->IsSeekExact())
	{
		mSpool = inFindSpool(mBlockFrames);
		mSharesSpool = mSpool != nullptr;
		if (mSharesSpool)
		{
			mDecoder.reset();
		}
	}
	CheckUnchanged();
}

AudioFileReader::~AudioFileReader() = default;

float const* AudioFileReader::GetBlock(std::int64_t inIndex)
{
	++mUseCount;
	for (Block& block : mBlocks)
	{
		if (block.mIndex == inIndex)
		{
			block.mLastUse = mUseCount;
			return block.mSamples.data();
		}
	}
	Block& block = ChooseBlockToFill(inIndex);
	// It holds nothing if filling it fails.
	block.mIndex = -1;
	FillBlock(inIndex, block.mSamples.data());
	block.mIndex = inIndex;
	block.mLastUse = mUseCount;
	return block.mSamples.data();
}

// Whoever reads on, in either direction, has just left a block, whose memory is still near the processor. Otherwise
// it is the one that was not used for longest.
AudioFileReader::Block& AudioFileReader::ChooseBlockToFill(std::int64_t inIndex)
{
	auto const leftBehind = std::ranges::find_if(mBlocks, [&](Block const& inBlock)
		{ return inBlock.mIndex >= 0 && (inBlock.mIndex == inIndex - 2 || inBlock.mIndex == inIndex + 2); });
	return leftBehind != mBlocks.end() ? *leftBehind
									   : *std::ranges::min_element(mBlocks, {}, &Block::mLastUse);
}

void AudioFileReader::FillBlock(std::int64_t inIndex, float* outSamples)
{
	std::int64_t const position = inIndex * mBlockFrames;
	std::int64_t const wanted = std::min(mBlockFrames, mInfo.mFrames - position);
	std::int64_t count = 0;
	try
	{
		count = ReadFrames(position, outSamples, wanted);
	}
	catch (HostError const&)
	{
		// A change is the better reason.
		CheckUnchanged();
		throw;
	}
	bool const isLast = position + wanted == mInfo.mFrames;
	if (count < wanted || isLast || ++mBlocksUnchecked == kBlocksPerCheck)
	{
		mBlocksUnchecked = 0;
		CheckUnchanged();
	}
	if (count < wanted)
	{
		ThrowCutShort(FindCut(position + count));
	}
}

std::int64_t AudioFileReader::FindCut(std::int64_t inEnd) const
{
	return mSpool ? std::min(inEnd, mSpool->GetFrames()) : inEnd;
}

std::int64_t AudioFileReader::ReadFrames(std::int64_t inPosition, float* outSamples, std::int64_t inFrames)
{
	return mDecoder && mDecoder->IsSeekExact() ? ReadSeekable(inPosition, outSamples, inFrames)
											   : ReadFromStart(inPosition, outSamples, inFrames);
}

std::int64_t AudioFileReader::ReadSeekable(std::int64_t inPosition, float* outSamples, std::int64_t inFrames)
{
	if (mDecoder->GetPosition() != inPosition)
	{
		++mJumpCount;
		if (!mDecoder->SeekTo(std::max<std::int64_t>(inPosition - mDecoder->GetPrerollFrames(), 0)))
		{
			ThrowCutShort(inPosition);
		}
		DecodeUpTo(inPosition, outSamples);
	}
	return mDecoder->Read(outSamples, inFrames);
}

std::int64_t AudioFileReader::ReadFromStart(std::int64_t inPosition, float* outSamples, std::int64_t inFrames)
{
	if (!mSpool && mDecoder->GetPosition() > inPosition)
	{
		++mJumpCount;
		mSpool = std::make_shared<DecodedSpool>(mInfo, mBlockFrames);
	}
	if (mSpool)
	{
		return ReadSpool(inPosition, outSamples, inFrames);
	}
	DecodeUpTo(inPosition, outSamples);
	return mDecoder->Read(outSamples, inFrames);
}

// Where there is no room for what readers share, each of them decodes for itself.
std::int64_t AudioFileReader::ReadSpool(std::int64_t inPosition, float* outSamples, std::int64_t inFrames)
{
	try
	{
		return mSpool->Read(inPosition, outSamples, inFrames, *mInfo.mDamage, mDamageSeen);
	}
	catch (HostError const&)
	{
		if (!mSharesSpool || !mSpool->LacksRoom())
		{
			throw;
		}
	}
	mSpool.reset();
	mSharesSpool = false;
	mDamageSeen = 0;
	mDecoder = OpenSoundDecoder(mInfo);
	return ReadFromStart(inPosition, outSamples, inFrames);
}

void AudioFileReader::DecodeUpTo(std::int64_t inPosition, float* ioScratch)
{
	while (mDecoder->GetPosition() < inPosition)
	{
		std::int64_t const count = std::min(mBlockFrames, inPosition - mDecoder->GetPosition());
		if (mDecoder->Read(ioScratch, count) < count)
		{
			ThrowCutShort(mDecoder->GetPosition());
		}
	}
}

// What was read from a file that changed is a mixture. One look at the file takes a small part of the time of a block.
void AudioFileReader::CheckUnchanged() const
{
	CheckState(mInfo, mReadablePath);
}

void AudioFileReader::ThrowCutShort(std::int64_t inPosition) const
{
	std::int64_t const position = GetFrameOfFile(mInfo, inPosition);
	RefuseFile(mInfo.mPath,
		"cannot be read at sample " + std::to_string(position) + " (" +
			FormatTime(position, mInfo.mSampleRate) + "), although its header states " +
			std::to_string(GetFileOf(mInfo).mFrames) + " samples: it is truncated or damaged",
		"get a complete copy");
}

} // namespace SonaroHost
