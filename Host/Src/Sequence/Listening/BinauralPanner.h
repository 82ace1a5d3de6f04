#pragma once

#include "Sequence/Stage/LayoutPanner.h"
#include "Sequence/Stage/Playhead.h"
#include "Sonaro/IAudioBinauralizer.h"
#include "SonaroHost/Binaural/Listener.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/ambi/AmbisonicsBinauralizer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace SonaroHost::Sequence
{

// Turns the sound of a layout into that of two ears: the channels become a sound field around the listener, and the
// engine's binauralizer renders it. Ears other than the built-in ones are rendered by the same class of zorvaudiodsp.
//
// History   That of the responses. After a jump it begins anew, and its transforms where those of the whole are: with
//           GetSettlingFrames of sound before it, the output has the same bits as without the jump. A loop goes on into
//           its start as it is heard.
// Reverse   The sound that is played backwards is heard, so that its ends ring on and not its starts.
class BinauralPanner final : public SN::Implements<BinauralPanner, LayoutPanner>
{
public:
	// The layout is one that CheckCanListen accepts.
	BinauralPanner(SN::AudioChannelLayout const& inInput, Listener const& inListener,
		StageClock const& inClock, unsigned inMaxBlockSize);

	static std::int64_t GetSettlingFrames(Listener const& inListener, SN::FrameRate const& inFrameRate);

	SN::InterfaceRef<SN::IAudioPanProcessor> Clone(SN::FrameRate const&, unsigned) override;
	bool HasHistory() override { return true; }
	void Preroll(SN::TickTime const&, bool) override { mNext.reset(); }
	void Reset() override { mNext.reset(); }
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		SN::TickTime const& inTime) SONARO_NONBLOCKING override;

private:
	// What goes into a component: channels and their gains.
	struct Sum
	{
		std::vector<std::size_t> mChannels;
		std::vector<float> mGains;
	};

	void MakeRenderer();
	void Begin(FrameRun const& inRun);
	void Encode(dsp::AudioBuffer const& inInput, unsigned inOffset, unsigned inCount);
	// Of the field.
	void Render(dsp::AudioBuffer& outEars);

	Listener mListener;
	StageClock mClock;
	unsigned mMaxBlockSize;
	// One of the two.
	SN::InterfaceRef<SN::IAudioBinauralizer> mBuiltIn;
	std::unique_ptr<dsp::ambi::AmbisonicsBinauralizer> mOther;
	std::vector<Sum> mSums;
	dsp::AudioBuffer mField;
	// What is rendered before a start.
	dsp::AudioBuffer mDiscarded;
	std::vector<float> mZeros;
	// The frame that follows what was heard; nothing after a jump.
	std::optional<std::int64_t> mNext;
	std::int64_t mStep = 1;
};

} // namespace SonaroHost::Sequence
