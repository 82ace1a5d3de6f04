#pragma once

#include "AngleCuts.h"
#include "NestNode.h"
#include "SonaroHost/Sequence/Description.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

// The angles of a multicam item, of which it plays the one that is cut to, or that a person has switched to.
//
// Cuts      Requests are split at them, so that they are exact in any block, direction and order. An angle that comes
//           in settles its effects by itself, as after any jump.
// Switching An angle that is switched to is heard from the start of the next request on, whatever the cuts say.
// Reading   Asked for is what the cuts play within the range, or what is switched to. Where one can switch at any time, the
//           other angles are asked for as well, and may come later.
// Engine    The engine's node for multicam clips plays the angles. It heeds its integer only at the top level of a playback,
//           so it has a context of its own in which it always is; what sets it here decides what is live.
// Threads   As for SequenceNode.
class MulticamContent final : public SN::Implements<MulticamContent, NestNode>
{
public:
	struct Angle
	{
		Generator mGenerator;
		// Whether it has to run all the time since its effects remember.
		bool mRunsOn = false;
	};
	struct Settings
	{
		std::vector<Angle> mAngles;
		AngleCuts mCuts{0};
		// May be empty.
		AngleSwitch mSwitch;
		// Whether angles that are not heard are read ahead, too.
		bool mReadsAll = false;
		SN::AudioChannelLayout mLayout;
		SN::FrameRate mFrameRate;
		// What is rendered and mixed in or not heard: of the layout's channels and at least one sample.
		std::shared_ptr<dsp::AudioBuffer> mScratch;
	};

	explicit MulticamContent(Settings const& inSettings);

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override;
	void Preroll(SN::TickTime const& inStartTime, bool inReverse) override;
	void AccumulatePrefetchRequests(SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;

	void Interrupt() override;
	bool IsUnheard() const override { return mIsUnheard; }
	void SetUnheard(bool inIsUnheard) override { mIsUnheard = inIsUnheard; }
	void SetPrefetchDirection(bool inIsReverse) override { mIsPrefetchedInReverse = inIsReverse; }

	std::u16string GetNodeName() override { return u"MulticamContent"; }

private:
	struct Player;
	// An angle's frames from their lowest one on.
	struct Request
	{
		std::int64_t mFrame = 0;
		bool mIsReverse = false;
		bool mIsUnheard = false;
	};

	MulticamContent(Settings const& inSettings, std::shared_ptr<Player> const& inPlayer);

	// What is heard at a frame.
	AngleCuts::Run FindRun(std::int64_t inFrame, int inSwitched) const
	{
		return inSwitched < 0 || inFrame < 0 ? mSettings.mCuts.Find(inFrame)
											 : AngleCuts::Run{.mFirst = 0, .mAngle = inSwitched};
	}
	int GetSwitched() const { return mSettings.mSwitch ? mSettings.mSwitch->Get() : AngleCuts::kNoAngle; }
	void RenderRun(
		AngleCuts::Run const& inRun, std::int64_t inFrame, bool inReverse, dsp::AudioBuffer& outBuffer);
	// A crossfade, within the scratch memory's length.
	void RenderFade(AngleCuts::Run const& inRun, Request const& inRequest, dsp::AudioBuffer& outBuffer);
	void RenderAngle(int inAngle, Request const& inRequest, dsp::AudioBuffer& outBuffer);
	// So many frames of those that have to run and are not heard.
	void RunOthers(AngleCuts::Run const& inRun, Request inRequest, unsigned inCount);
	void ReadAhead(int inAngle, SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator);

	Settings mSettings;
	std::shared_ptr<Player> mPlayer;
	bool mIsUnheard = false;
	// Only for whoever reads ahead.
	bool mIsPrefetchedInReverse = false;
};

} // namespace SonaroHost::Sequence
