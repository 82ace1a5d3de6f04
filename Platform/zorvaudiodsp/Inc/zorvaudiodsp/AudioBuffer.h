#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/utility/Flags.h"

#include <memory>
#include <vector>

namespace dsp
{

// One bit a channel, channel 0 in bit 0.
using SilenceFlags = zorvcore::utility::Flags<unsigned long long>;

// A planar buffer of 32-bit floats with a silence flag for each channel; the owner of its memory, and
// the face under which views of other memory are handed around.
//
// Silence   A flagged channel counts as zeros whatever its samples hold, so a reader looks at the flags
//           first. Who writes samples through the raw pointers says so with NoteChannelWrite,
//           NoteBufferWrite or ClearSilenceFlags. Flags of absent channels read as set.
// Length    UseSize samples of each channel count; any value up to the capacity, never reallocating.
// Channels  At most 64. An index beyond the count gives a null pointer, reads as silent, and what is
//           written there is dropped.
// Memory    Each channel is aligned to 64 bytes and padded to a multiple of 16 samples. Only the
//           constructors, Init and copying allocate.
// Threads   One at a time.
class ZORV_API AudioBuffer
{
public:
	static constexpr unsigned kMaxChannels = 64;

	// A buffer without channels.
	AudioBuffer() = default;
	AudioBuffer(unsigned long long inChannels, unsigned inSamples);
	// A copy in memory of its own, also of a view.
	AudioBuffer(AudioBuffer const& inOther);
	AudioBuffer& operator=(AudioBuffer const&) = delete;

	virtual ~AudioBuffer();
	// Clamped to the capacity.
	virtual void SetUseSize(unsigned inSamples);
	virtual bool IsSilent() const;
	virtual bool IsChannelSilent(unsigned long long inChannel) const;
	virtual void MarkChannelSilent(unsigned long long inChannel);
	// Sets the whole mask: channels whose bit is clear lose their flag.
	virtual void SetSilenceFlags(SilenceFlags const& inFlags);
	// Samples from inFirst on were written, inCount of them, in every channel, without the buffer's knowledge: all
	// flags go. What lay flagged outside of them becomes zeros.
	virtual void NoteBufferWrite(unsigned inFirst, unsigned inCount);
	// The first inSamples of one channel were written: its flag goes. The rest of a flagged channel
	// becomes zeros.
	virtual void NoteChannelWrite(unsigned long long inChannel, unsigned inSamples);
	// Clears the flags of the channels in the mask: all their samples count from now on.
	virtual void ClearSilenceFlags(SilenceFlags const& inFlags);
	virtual SilenceFlags GetSilenceFlags() const;
	// Flags all channels and need not touch a sample: the answer of a node that is silent.
	virtual void Zero();

	// Allocates: samples zero, flags clear, UseSize the capacity. Throws zorv_exception above 64 channels.
	void Init(unsigned long long inChannels, unsigned inSamples);

	unsigned long long GetNumChannels() const { return mNumChannels; }
	unsigned GetUseSize() const { return mUseSize; }
	unsigned GetCapacity() const { return mCapacity; }
	float* GetChannel(unsigned long long inChannel)
	{
		return inChannel < mNumChannels && mChannels ? mChannels[inChannel] : nullptr;
	}
	float const* GetChannel(unsigned long long inChannel) const
	{
		return inChannel < mNumChannels && mChannels ? mChannels[inChannel] : nullptr;
	}
	// The pointers of all channels, for as long as the buffer keeps its shape.
	float** GetChannels() { return mChannels; }
	float const* const* GetChannels() const { return mChannels; }

	// Whether a loop over a channel may run up to the next multiple of four samples: the memory is aligned, and what
	// lies beyond the end is padding of the channel's own.
	bool CanProcessInGroupsOfFour() const { return mGroupsOfFour; }

	// Writes zeros into UseSize samples of every channel and leaves the flags alone.
	void ZeroBuffers();
	// Writes zeros into the first samples of one channel. inMarkSilent also sets its flag when these are
	// all UseSize samples; what lies beyond a part is still heard.
	void ZeroChannel(unsigned long long inChannel, unsigned inSamples, bool inMarkSilent);
	void SetChannelZero(unsigned long long inChannel, bool inSilent);

	// Copies samples and flags, and takes over the source's UseSize up to the capacity. Channels that the
	// source lacks are flagged.
	void CopyFrom(AudioBuffer const& inSource);

	// These run over the smaller of both UseSizes, and of inSamples where there is one; what lies beyond
	// stays. A silent source flags a channel that is covered whole, and writes zeros into one that is not.
	void CopyFrom(AudioBuffer const& inSource, unsigned inSamples);
	void CopyFrom(AudioBuffer const& inSource, unsigned long long inChannel, unsigned inSamples);
	void CopyChannel(AudioBuffer const& inSource, unsigned long long inSourceChannel,
		unsigned long long inDestinationChannel);
	void CopyCertainChannelsFrom(
		AudioBuffer const& inSource, unsigned inSamples, SilenceFlags const& inChannels);
	// A gain of 0 flags the channel like a silent source.
	void CopyFromScale(AudioBuffer const& inSource, float inGain);

	// Adds the source over the smaller of both UseSizes. Its silent channels add nothing; a silent channel
	// here takes the source's samples.
	void Mix(AudioBuffer const& inSource);
	// Multiplies all samples that are not flagged.
	AudioBuffer& operator*=(float inGain);
	// Turns the UseSize samples of each channel end for end.
	void Reverse();

protected:
	// Lets a view use the memory of somebody else.
	void SetMemory(
		float** inChannels, unsigned long long inNumChannels, unsigned inCapacity, bool inGroupsOfFour);
	void SetLength(unsigned inUseSize) { mUseSize = inUseSize < mCapacity ? inUseSize : mCapacity; }

private:
	friend class AudioSubBuffer;
	friend class AudioBufferChannel;

	struct Free
	{
		void operator()(float* inMemory) const;
	};

	static SilenceFlags Bit(unsigned long long inChannel);
	bool IsFlagged(unsigned long long inChannel) const { return mFlags.Test(inChannel); }
	// The samples of one channel, about to be overwritten from the first on, inCount of them.
	float* BeginWrite(unsigned long long inChannel, unsigned inCount);
	void CopyOneChannel(AudioBuffer const& inSource, unsigned long long inSourceChannel,
		unsigned long long inDestinationChannel, unsigned inCount);
	// Makes the first inCount samples of a channel silent: by the flag where these are all.
	void Silence(unsigned long long inChannel, unsigned inCount);
	// Zeros in [0, inFirst) and [inEnd, UseSize) of one channel.
	void ZeroOutside(unsigned long long inChannel, unsigned inFirst, unsigned inEnd);

	// All samples, channel after channel, and where each begins; empty in a view.
	std::unique_ptr<float, Free> mMemory;
	std::vector<float*> mOwnChannels;
	float** mChannels = nullptr;
	unsigned long long mNumChannels = 0;
	unsigned mUseSize = 0;
	unsigned mCapacity = 0;
	SilenceFlags mFlags;
	bool mGroupsOfFour = false;
};

} // namespace dsp
