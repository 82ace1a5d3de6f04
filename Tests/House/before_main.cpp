// A host that uses the engine in the constructor of a static object, and of the engine only functions, not the
// factory: in a static build that decides what is linked and what is made when. Reports what fails.
#include "Sonaro/AudioChannelMatrixMasks.h"
#include "Sonaro/AudioChannelMix.h"
#include "Sonaro/AudioChannelMixFunctions.h"
#include "Sonaro/AudioPrefetch.h"
#include "Sonaro/AudioResamplerFactory.h"
#include "Sonaro/GeneratorPrefetch.h"
#include "Sonaro/IAudioTimeScalerFactory.h"
#include "Vexilon/AudioChannelType.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/threads/Gate.h"

#include <chrono>
#include <cstdio>

namespace
{

using namespace SN;

class Notify final : public AudioPrefetch::IAudioPrefetchNotify
{
public:
	void Complete(int) override { mTold.Open(); }

	zorvcore::threads::Gate mTold{false};

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		return zorvcore::classref::QueryInterfaces<IAudioPrefetchNotify, Unknown>(this, inIdentifier);
	}
};

class EarlyHost
{
public:
	EarlyHost()
	{
		CheckLayouts();
		CheckPrefetch();
		CheckPublicFunctions();
	}

	int mFaults = 0;

private:
	void Check(bool inHolds, char const* inWhat)
	{
		if (!inHolds)
		{
			std::printf("%s\n", inWhat);
			++mFaults;
		}
	}

	void CheckLayouts()
	{
		Check(VX::kAudioChannelLayout_Mono.size() == 1, "the mono layout is not there");
		Check(VX::kAudioChannelLayout_Stereo.size() == 2, "the stereo layout is not there");
		Check(VX::kAudioChannelLayout_51.size() == 6, "the 5.1 layout is not there");
		Check(VX::kAudioChannelLayout_Multichannel.size() == 32, "the multichannel layout is not there");
	}

	void CheckPrefetch()
	{
		auto const notify = zorvcore::classref::MakeObject<Notify>();
		AudioPrefetch::PrefetchAudio(AudioPrefetch::PlaybackPriority, {}, 0, notify);
		Check(notify->mTold.PassThroughUntil(std::chrono::steady_clock::now() + std::chrono::minutes(1)),
			"the prefetch does not answer");
		ProcessSynchronousPrefetchRequests({}, 0);
	}

	void CheckPublicFunctions()
	{
		AudioChannelMatrix const matrix{{0, {1, 2}}, {3, {2}}};
		Check(EnumerateInputChannels(matrix).Test(3) && EnumerateOutputChannels(matrix).Test(1) &&
				  AudioMatrixToString(matrix).empty(),
			"the masks of a routing are wrong");
		dsp::AudioBuffer mono(1, 4);
		dsp::AudioBuffer stereo(2, 4);
		mono.GetChannel(0)[2] = 0.5f;
		AudioChannelMix::ACMMonoToStereoDefault(mono, stereo);
		Check(stereo.GetChannel(1)[2] == 0.5f, "mono is not copied to stereo");
		auto const fold =
			AudioChannelMix::GetMixFunction(VX::kAudioChannelLayout_Stereo, VX::kAudioChannelLayout_Mono);
		fold(stereo, mono);
		Check(mono.GetChannel(0)[2] == 0.5f, "stereo is not folded to mono");
		auto const resampler = AudioResamplerFactory::CreateAudioResampler(RenderQuality::kMedium);
		Check(resampler && resampler->SupportsFrameRateChange(), "there is no resampler");
		Check(GetAudioTimeScalerFactory().IsValid(), "there is no factory of time scalers");
	}
};

EarlyHost const sHost;

} // namespace

int main()
{
	return sHost.mFaults;
}
