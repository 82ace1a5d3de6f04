#pragma once

#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Metering/LoudnessMeter.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

namespace SonaroHost
{

// A loudness meter within a graph. Its reading is new every 100 ms of audio.
//
// Runs     After a Reset the reading is that of silence, and the next run is measured by itself. The meter for
//          it is made by Init or, for every further run, by GetReading; a run that begins before that is
//          not heard until then.
// Threads  SetMeterData and Reset: the render thread; they neither lock nor allocate. GetReading: one
//          thread of the host, at any time between Init and Shutdown. The rest: while nothing renders.
class LoudnessMeterSetter final : public SN::Implements<LoudnessMeterSetter, SN::IAudioMeterSetter>
{
public:
	static constexpr SN::Identifier<LoudnessMeterSetter> kIdentifier{
		0x2b9e60d7f4135ca8ull, 0xe85a17c3069db24full};

	// inLayout: of the graph that it hears.
	explicit LoudnessMeterSetter(SN::AudioChannelLayout inLayout);

	// Throws a HostError when inChannels are not those of the layout, or cannot be measured.
	void Init(SN::FrameRate const& inFrameRate, unsigned inChannels) override;
	void SetMeterData(
		dsp::AudioBuffer const& inBuffer, SN::TickTime const& inTime) SONARO_NONBLOCKING override;
	void Shutdown() override;
	void Reset() override;

	LoudnessReading GetReading();

private:
	static constexpr std::size_t kNumValues = 6;

	void Publish(LoudnessReading const& inReading);
	// Moves on to the spare meter; false when there is none.
	bool TakeSpare();
	std::unique_ptr<LoudnessMeter> MakeMeter() const;

	SN::AudioChannelLayout mLayout;
	double mSampleRate = 0.0;
	// The render thread's.
	std::unique_ptr<LoudnessMeter> mMeter;
	bool mHasHeard = false;
	bool mNeedsSpare = false;
	unsigned mFramesToReading = 0;
	// Whose mSpare is: the render thread's to take while it is fresh, else the host's to make anew.
	std::atomic<bool> mIsSpareFresh{false};
	std::unique_ptr<LoudnessMeter> mSpare;
	// The values in the order of LoudnessReading.
	std::array<std::atomic<double>, kNumValues> mValues;
};

} // namespace SonaroHost
