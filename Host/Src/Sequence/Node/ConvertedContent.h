#pragma once

#include "ContentWindow.h"
#include "NestNode.h"
#include "ReadingNode.h"
#include "SonaroHost/Media/SampleConverter.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

// A content in another rate than its own, or at another speed: its frame k is the converter's output k. What is heard
// depends on the content around that place alone, whatever was asked before, unless the content itself remembers.
//
// Meters   In a nested sequence they hear each of its frames once, whatever the start: what the filter reads before the first
//          output is what an output before it would have read, and is not heard.
// Silence  A channel is flagged where the content flags all that the outputs depend on.
// Threads  As for the content. Nothing allocates after the constructor.
class ConvertedContent final : public SN::Implements<ConvertedContent, ReadingNode>
{
public:
	static constexpr SN::Identifier<ConvertedContent> kIdentifier{
		0x7be1942d5a0f83c6ull, 0x4d9a60e17c2bf538ull};

	struct Settings
	{
		// It counts by mFrameRate, whatever its own rate.
		Generator mContent;
		std::shared_ptr<SampleConverter const> mConverter;
		SN::FrameRate mFrameRate;
		// What the content is read into: of its channels and at least one sample.
		std::shared_ptr<dsp::AudioBuffer> mScratch;
	};

	explicit ConvertedContent(Settings const& inSettings);

	Generator const& GetContent() const { return mSettings.mContent; }
	// Whether it is read from higher frames to lower ones at a frame of its own.
	bool IsBackwards(std::int64_t inFrame) const { return mSettings.mConverter->IsBackwards(inFrame); }
	// What comes next does not follow what was asked before, wherever it is.
	void Interrupt() { mWindow.Forget(); }

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override;
	void Preroll(SN::TickTime const& inStartTime, bool inReverse) override;
	void AccumulatePrefetchRequests(SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;
	void Reset() override;

	std::u16string GetNodeName() override { return u"ConvertedContent"; }

private:
	bool MapDirection(std::int64_t inFrame, bool inReverse) const
	{
		return inReverse != IsBackwards(inFrame);
	}
	// What can be made at once of so many frames: the first of them, or in reverse the last.
	SampleConverter::Span ChoosePiece(std::int64_t inFrame, std::int64_t inCount, bool inReverse) const;
	// So many frames from inFrame on in one direction, to where they stand in the buffer when it is played forward.
	void Render(std::int64_t inFrame, unsigned inCount, unsigned inTarget, bool inReverse,
		dsp::AudioBuffer& ioBuffer);

	// What an output before this one would have left in the window.
	void ReadPast(std::int64_t inFrame, unsigned inCount, bool inReverse);

	Settings mSettings;
	// Empty for a clip.
	SN::InterfaceRef<NestNode> mNest;
	ContentWindow mWindow;
	// The most frames that the window has room for.
	std::int64_t mMostFrames;
	// The channels that are converted in a piece, and which have been heard in this block.
	std::vector<SampleConverter::Channel> mChannels;
	dsp::SilenceFlags mHeard;
};

} // namespace SonaroHost::Sequence
