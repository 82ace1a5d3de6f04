#include "Waveform/AudioWaveformBuffer.h"

#include "zorvcore/messaging/Stations.h"

namespace SN
{

namespace
{

using zorvcore::threads::AtomicIntegral;

AtomicIntegral<unsigned> sLastBufferId;

class AudioWaveformBuffer final : public Implements<AudioWaveformBuffer, IAudioWaveformBuffer>
{
public:
	~AudioWaveformBuffer() override
	{
		if (mOwnsStation)
		{
			zorvcore::messaging::DisposeStation(mStationID);
		}
	}

	ImmutableString GetStationID() override { return mStationID; }
	unsigned GetBufferId() override { return mBufferId; }
	unsigned long long GetNumChannels() override { return mChannels.size(); }
	unsigned long long GetNumSamples() override { return mChannels.empty() ? 0 : mChannels.front().size(); }
	unsigned GetSampleCount() override { return static_cast<unsigned>(mSampleCount.Get()); }
	std::vector<std::vector<float>>& GetChannels() override { return mChannels; }
	bool IsComplete() override { return mCompleted.Get() != 0; }
	void Cancel() override { mPending->Exchange(0); }
	bool GetHostFlag() override { return mHostFlag.Get(); }
	void SetHostFlag(bool inFlag) override { mHostFlag.Set(inFlag); }
	void SetComplete() override { mCompleted.Exchange(1); }
	bool IsPending() override { return mPending->Get() != 0; }
	std::shared_ptr<AtomicIntegral<int>> const& GetPending() override { return mPending; }
	void SetSampleCount(unsigned long long inCount) override { mSampleCount.Set(inCount); }
	void SetStationID(ImmutableString const& inStationID) override;
	void SetSecondHostFlag(bool inFlag) override { mSecondHostFlag.Set(inFlag); }
	bool GetSecondHostFlag() override { return mSecondHostFlag.Get(); }
	InterfaceRef<IAudioWaveformBuffer> GetSelfReference() override
	{
		return InterfaceRef<IAudioWaveformBuffer>::FromThis(this);
	}

private:
	std::vector<std::vector<float>> mChannels;
	AtomicIntegral<unsigned long long> mSampleCount;
	AtomicIntegral<bool> mHostFlag;
	std::shared_ptr<AtomicIntegral<int>> const mPending = std::make_shared<AtomicIntegral<int>>(1);
	AtomicIntegral<int> mCompleted;
	ImmutableString mStationID;
	unsigned const mBufferId = sLastBufferId.Add(1);
	AtomicIntegral<bool, true> mSecondHostFlag;
	bool mOwnsStation = false;
};

void AudioWaveformBuffer::SetStationID(ImmutableString const& inStationID)
{
	if (mOwnsStation && !mStationID.IsEmpty())
	{
		zorvcore::messaging::DisposeStation(mStationID);
		mOwnsStation = false;
	}
	if (!inStationID.IsEmpty())
	{
		mStationID = inStationID;
		return;
	}
	mStationID = zorvcore::messaging::RegisterUniqueStation();
	mOwnsStation = true;
}

} // namespace

InterfaceRef<IAudioWaveformBuffer> MakeAudioWaveformBuffer()
{
	return zorvcore::classref::MakeObject<AudioWaveformBuffer>();
}

} // namespace SN
