#pragma once

#include <memory>

namespace SonaroHost
{

class MeterLanes;

// Runs the filters of many loudness meters side by side, which takes a fraction of the time that each of them would by
// itself. What the meters say is the same.
//
// Delay    Meters hear their blocks later, at the latest when one of them is read.
// Threads  One at a time for the bank and all of its meters.
class LoudnessBank
{
public:
	// A bank for meters at this sample rate.
	explicit LoudnessBank(double inSampleRate);
	~LoudnessBank();
	LoudnessBank(LoudnessBank const&) = delete;
	LoudnessBank& operator=(LoudnessBank const&) = delete;

	double GetSampleRate() const;

private:
	friend class LoudnessMeter;

	std::unique_ptr<MeterLanes> mLanes;
};

} // namespace SonaroHost
