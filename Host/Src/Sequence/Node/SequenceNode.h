#pragma once

#include "NestNode.h"
#include "Sequence/Stage/Playhead.h"
#include "Sonaro/ICachedAudioGenerator.h"
#include "Sonaro/Prefetcher.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

// One sequence, outermost or nested: it runs the tracks of the engine's group.
//
// Settling  What must run before an output is right, this node knows for its own level: as many frames as its tracks
//           are asked ahead at most, and the history of its output. Wherever it is read out of turn it renders them first and throws them away.
//           Items within do the same for theirs (ItemContent), nested sequences likewise. So a start in the middle,
//           a seek, a jump of a loop around a nested sequence or the end of a mute need nothing else, and nothing adds
//           up over the levels.
// Loops     The outermost sequence goes round with the playback: a track that is ahead of the playhead wraps into
//           the loop before the playhead does, so nothing has to settle at the jump. Requests are cut where one of
//           the tracks jumps; loops of any length will do. Nested sequences do not see the loop.
// Group     The engine's own group wraps forward alone, once, and only at the start of a block, and settles by rules
//           of its own. So it only holds the tracks and their delay lines, and the tracks are run from here.
// Threads   One at a time. AccumulatePrefetchRequests may be called by another one. Nothing allocates after the
//           constructor.
class SequenceNode final : public SN::Implements<SequenceNode, NestNode>
{
public:
	static constexpr SN::Identifier<SequenceNode> kIdentifier{0x3c1f9be07a5d4e26ull, 0x91d7c04ab8e35f12ull};

	struct Settings
	{
		struct Track
		{
			// How far ahead it is asked.
			std::int64_t mAhead = 0;
			// How often it has jumped, for its items.
			std::shared_ptr<std::uint64_t> mJumps;
			// That of its effects: more than it is asked ahead where only meters hear them.
			std::int64_t mLatency = 0;
		};
		// The engine's, and its tracks in its order.
		Generator mGroup;
		std::vector<Track> mTracks;
		std::shared_ptr<Playhead> mPlayhead;
		SN::AudioChannelLayout mLayout;
		SN::FrameRate mFrameRate;
		// What settling renders into: of the sequence's channels and at least one sample.
		std::shared_ptr<dsp::AudioBuffer> mDiscarded;
		// The prefetcher of the outermost sequence in a playback; else null.
		SN::Prefetcher const* mPrefetcher = nullptr;
		// How many frames of its tracks the output depends on besides.
		std::int64_t mHistoryFrames = 0;
	};

	explicit SequenceNode(Settings const& inSettings);

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override;
	// Renders nothing: what comes first settles.
	void Preroll(SN::TickTime const& inStartTime, bool inReverse) override;
	void AccumulatePrefetchRequests(SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;
	void Reset() override;

	void Interrupt() override { mNext.reset(); }
	bool IsUnheard() const override { return mSettings.mPlayhead->mIsUnheard; }
	void SetUnheard(bool inIsUnheard) override { mSettings.mPlayhead->mIsUnheard = inIsUnheard; }
	void SetPrefetchDirection(bool inIsReverse) override
	{
		mSettings.mPlayhead->mIsPrefetchedInReverse = inIsReverse;
	}

	std::u16string GetNodeName() override { return u"SequenceNode"; }

private:
	struct Member
	{
		Generator mGenerator;
		SN::InterfaceRef<SN::ICachedAudioGenerator> mCached;
		Settings::Track mTrack;
		// What was asked for last, from its lowest frame on.
		std::int64_t mFrame = 0;
		std::int64_t mCount = 0;
	};

	LoopRange GetLoop() const;
	bool IsInTurn(std::int64_t inBegin, bool inReverse, LoopRange const& inLoop) const;
	// inBegin: where the next request begins in playing order; in reverse, the end of it.
	void Settle(std::int64_t inBegin, bool inReverse);
	// inFrame: the lowest one.
	void Render(std::int64_t inFrame, dsp::AudioBuffer& ioBuffer, bool inReverse);
	// How many frames from one on can be rendered before a track jumps; in reverse, down from one.
	std::int64_t GetRunLength(std::int64_t inBegin, std::int64_t inCount, bool inReverse) const;
	void RenderRun(std::int64_t inFrame, dsp::AudioBuffer& ioBuffer, bool inReverse);
	// Called before a member is asked for frames from a lowest one on.
	void NoteRequest(Member& ioMember, std::int64_t inFrame, std::int64_t inCount, bool inReverse);

	Settings mSettings;
	std::vector<Member> mMembers;
	std::int64_t mSettlingFrames = 0;
	bool mIsPrerolled = false;
	// Whether all tracks begin elsewhere with the next run.
	bool mHasJumped = true;
	// Where the next request begins, if it follows, and how it is played.
	std::optional<std::int64_t> mNext;
	bool mIsReverse = false;
};

} // namespace SonaroHost::Sequence
