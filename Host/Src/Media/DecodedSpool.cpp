#include "DecodedSpool.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/Temporary.h"
#include "SoundDecoders.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

namespace SonaroHost
{

namespace
{

// Damage that the spool's decoder finds is kept apart from what is known of the file.
AudioFileInfo WithOwnDamage(AudioFileInfo inInfo)
{
	inInfo.mDamage = std::make_shared<MediaDamage>();
	return inInfo;
}

} // namespace

DecodedSpool::DecodedSpool(AudioFileInfo inInfo, std::int64_t inStepFrames)
	: mInfo(WithOwnDamage(std::move(inInfo))),
	  mDecoder(OpenSoundDecoder(mInfo)),
	  mStepFrames(inStepFrames),
	  mStep(static_cast<std::size_t>(inStepFrames) * mDecoder->GetNumChannels()),
	  mFile(MakeUnnamedFile())
{
	if (!mFile)
	{
		ThrowLackOfRoom();
	}
}

DecodedSpool::~DecodedSpool() = default;

std::int64_t DecodedSpool::Read(std::int64_t inPosition, float* outSamples, std::int64_t inFrames,
	MediaDamage& outDamage, DamageCursor& ioCursor)
{
	std::int64_t const end = inPosition + inFrames;
	Lock lock(mMutex);
	ExtendTo(end, lock);
	for (; ioCursor < mDamage.size() && mDamage[ioCursor].first < end; ++ioCursor)
	{
		outDamage.Add(mDamage[ioCursor].second);
	}
	std::int64_t const count = std::clamp<std::int64_t>(mFrames - inPosition, 0, inFrames);
	std::size_t const frameSize = mDecoder->GetNumChannels() * sizeof(float);
	static_assert(sizeof(long) == sizeof(std::int64_t), "positions in the spool need 64 bits");
	if (std::fseek(mFile.get(), inPosition * static_cast<long>(frameSize), SEEK_SET) != 0 ||
		std::fread(outSamples, frameSize, static_cast<std::size_t>(count), mFile.get()) !=
			static_cast<std::size_t>(count))
	{
		ThrowLackOfRoom();
	}
	return count;
}

std::int64_t DecodedSpool::GetFrames() const
{
	Lock const lock(mMutex);
	return mFrames;
}

bool DecodedSpool::LacksRoom() const
{
	Lock const lock(mMutex);
	return mLacksRoom;
}

void DecodedSpool::ExtendTo(std::int64_t inEnd, Lock& ioLock)
{
	while (mFrames < inEnd && !mIsAtEnd)
	{
		if (mFailure)
		{
			std::rethrow_exception(mFailure);
		}
		if (mIsDecoding)
		{
			mChanged.wait(ioLock);
			continue;
		}
		try
		{
			Decode(std::min(mStepFrames, inEnd - mFrames), ioLock);
		}
		catch (...)
		{
			mFailure = std::current_exception();
		}
		mIsDecoding = false;
		mChanged.notify_all();
	}
}

void DecodedSpool::Decode(std::int64_t inFrames, Lock& ioLock)
{
	mIsDecoding = true;
	ioLock.unlock();
	std::int64_t count = 0;
	try
	{
		count = mDecoder->Read(mStep.data(), inFrames);
	}
	catch (...)
	{
		ioLock.lock();
		throw;
	}
	ioLock.lock();
	for (MediaDamage::Stretch const& stretch : mInfo.mDamage->Take())
	{
		mDamage.emplace_back(mFrames, stretch);
	}
	Store(count);
	mIsAtEnd = count < inFrames;
}

void DecodedSpool::Store(std::int64_t inFrames)
{
	auto const count = static_cast<std::size_t>(inFrames);
	std::size_t const frameSize = mDecoder->GetNumChannels() * sizeof(float);
	// What fills up the disk shows when the buffer is written.
	if (std::fseek(mFile.get(), 0, SEEK_END) != 0 ||
		std::fwrite(mStep.data(), frameSize, count, mFile.get()) != count || std::fflush(mFile.get()) != 0)
	{
		ThrowLackOfRoom();
	}
	mFrames += inFrames;
}

void DecodedSpool::ThrowLackOfRoom()
{
	std::string const reason = std::generic_category().message(errno);
	std::error_code error;
	bool const isFolder = std::filesystem::is_directory(GetFolderOfTemporaries(), error);
	mLacksRoom = true;
	RefuseFile(mInfo.mPath,
		"its decoded samples cannot be stored in a temporary file in " + QuotePath(GetFolderOfTemporaries()) +
			": " + reason,
		std::string(isFolder ? "set TMPDIR to another folder with more space"
							 : "set TMPDIR to a folder that exists") +
			(mInfo.mStretch ? "" : ", or convert the file to WAV, which needs none"));
}

} // namespace SonaroHost
