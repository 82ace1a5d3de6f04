#pragma once

#include "Files/SystemFiles.h"
#include "SonaroHost/Media/AudioFileInfo.h"
#include "SonaroHost/Media/MediaDamage.h"
#include "SoundDecoder.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace SonaroHost
{

// The decoded samples of a file from its start on, kept in a nameless temporary file that goes with
// this object. It serves codecs that cannot be entered in the middle without changing their samples:
// what was decoded once is read back, by one reader or by many.
//
// Extent   It decodes in steps, and no step further than somebody has read: what it finds damaged does not depend on
//          who reads first.
// Threads  Any. One reader decodes at a time, without a lock; the others go on as soon as what they wait for is there.
class DecodedSpool
{
public:
	// What a reader has seen of the damage.
	using DamageCursor = std::size_t;

	// inStepFrames: what is decoded at a time; readers begin and end at multiples of it, or at the end. Throws a HostError
	// when the file cannot be opened or there is no room for temporary files.
	DecodedSpool(AudioFileInfo inInfo, std::int64_t inStepFrames);
	~DecodedSpool();
	DecodedSpool(DecodedSpool const&) = delete;
	DecodedSpool& operator=(DecodedSpool const&) = delete;

	// Reads frames that may lie anywhere in the file, decoding up to their end first. Returns how many there were.
	// Damage that was found up to there is added to outDamage, but what the cursor has passed. Throws a HostError.
	std::int64_t Read(std::int64_t inPosition, float* outSamples, std::int64_t inFrames,
		MediaDamage& outDamage, DamageCursor& ioCursor);

	// The frames that are decoded by now: once a read was short, all that there are.
	std::int64_t GetFrames() const;
	// Whether it has failed because there is no room for the samples.
	bool LacksRoom() const;

private:
	using Lock = std::unique_lock<std::mutex>;

	// Decodes until inEnd, as far as the stream goes.
	void ExtendTo(std::int64_t inEnd, Lock& ioLock);
	// Decodes a step, while the lock is open, and stores it.
	void Decode(std::int64_t inFrames, Lock& ioLock);
	void Store(std::int64_t inFrames);
	[[noreturn]] void ThrowLackOfRoom();

	AudioFileInfo mInfo;
	std::unique_ptr<SoundDecoder> mDecoder;
	std::int64_t mStepFrames;
	std::vector<float> mStep;

	mutable std::mutex mMutex;
	std::condition_variable mChanged;
	FileHandle mFile;
	std::int64_t mFrames = 0;
	bool mIsDecoding = false;
	bool mIsAtEnd = false;
	bool mLacksRoom = false;
	// What ended the decoding.
	std::exception_ptr mFailure;
	// Damage, and the frame at which the step began that found it, in the order of the steps.
	std::vector<std::pair<std::int64_t, MediaDamage::Stretch>> mDamage;
};

} // namespace SonaroHost
