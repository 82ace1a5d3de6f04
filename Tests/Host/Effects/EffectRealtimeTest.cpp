#include "EffectFolders.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "SonaroHost/Effects/PreparedEffect.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "Support/RealtimeGuard.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace SonaroHost::Testing::EffectRealtimeTest
{

// Plugins that do not allocate themselves, one with its own latency, one that is buffered, one with work and one that moves.
TEST(Effects, ProcessingNeitherAllocatesNorLocks)
{
	FindTestPlugins();
	constexpr unsigned kBlockFrames = 512;
	constexpr double kRate = 48000.0;
	Effects::EffectSetup moving{"urn:sonaro-test:controls"};
	moving.mSettings.push_back({"frequency", 0.0,
		{{SN::kTimeZero, 10.0}, {SN::TickTime::FromTicks(zorvmediatypes::kTicksPerSecond), 99.0}}});
	Effects::EffectSetup messages{"urn:sonaro-test:parameters"};
	messages.mSettings.push_back({"level", 0.0, moving.mSettings[0].mPoints});
	for (Effects::EffectSetup const& setup :
		{Effects::EffectSetup{"urn:sonaro-test:delay"}, Effects::EffectSetup{"urn:sonaro-test:blocks"},
			Effects::EffectSetup{"urn:sonaro-test:worker"}, moving, messages})
	{
		SCOPED_TRACE(setup.mUri);
		SN::FrameRate const rate = SN::FrameRate::FromSamplesPerSecond(kRate);
		RenderContextScope const context(kBlockFrames, SN::kTimeMax, SN::ImmutableString("test"));
		SN::InterfaceRef<SN::IAudioProcessor> const effect =
			Effects::PreparedEffect(setup, kRate)
				.Make(context.Get(), rate, zorvmediatypes::CreateStereoChannelLayout());
		SN::InterfaceRef<SN::IParameterOwnerMixin> const controls(effect);
		dsp::AudioBuffer block(2, kBlockFrames);
		effect->InitializeAudioFilter();
		effect->Preroll(SN::kTimeZero, false);

		float sum = 0.0f;
		SN::Testing::RealtimeGuard const guard;
		for (std::int64_t frame = 0; frame < 100 * kBlockFrames; frame += kBlockFrames)
		{
			block.SetUseSize(kBlockFrames);
			block.ZeroBuffers();
			block.GetChannel(0)[frame % kBlockFrames] = 1.0f;
			block.NoteBufferWrite(0, kBlockFrames);
			controls->UpdateControls(SN::TickTime(frame, rate));
			effect->ProcessAudioData(block, SN::TickTime(frame, rate));
			sum += std::fabs(*std::max_element(block.GetChannel(0), block.GetChannel(0) + kBlockFrames));
		}
		EXPECT_EQ(guard.GetAllocations(), 0);
		EXPECT_EQ(guard.GetLocks(), 0);
		EXPECT_GT(sum, 0.0f);
		effect->ShutdownAudioFilter();
	}
}

} // namespace SonaroHost::Testing::EffectRealtimeTest
