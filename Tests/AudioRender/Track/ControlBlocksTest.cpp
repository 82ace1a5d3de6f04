#include "Support/Engine.h"

namespace SN::ControlBlocksTest
{

struct Request
{
	char const* mName;
	long long mStart;
	unsigned mFrames;
	bool mReverse;
	// Where a parameter changes next.
	TickTime mNext;
	// Start and length of what the processors are given; the interval is 16.
	std::vector<std::pair<long long, long long>> mBlocks;
};

// One request after the other to a track whose last processor is the log.
void ExpectBlocks(
	std::vector<Request> const& inRequests, IAudioGenerator& ioTrack, FakeProcessor& ioLog, TickTime& outNext)
{
	for (Request const& request : inRequests)
	{
		SCOPED_TRACE(request.mName);
		outNext = request.mNext;
		ioLog.mCalls.clear();
		dsp::AudioBuffer buffer(2, request.mFrames);
		ioTrack.GetAudioData(At(request.mStart), buffer, request.mReverse);
		std::vector<std::pair<long long, long long>> blocks;
		for (Call const& call : ioLog.mCalls)
		{
			blocks.emplace_back(call.mTime.ToFrame64(k48000Hz), call.mAmount);
		}
		EXPECT_EQ(blocks, request.mBlocks);
		long long const first = request.mReverse ? request.mStart + request.mFrames - 1 : request.mStart;
		EXPECT_EQ(buffer.GetChannel(0)[0], PositionSample(0, first)) << "the source's playing order stays";
	}
}

TEST(ControlBlocks, OfAClipTrackGoOnOverRequestsAndTimesFallInReverse)
{
	Prefetcher prefetcher;
	ScopedContext const context(512, &prefetcher);
	auto const pan = MakeObject<FakeParameter>(0.0f);
	auto const log = MakeObject<FakeProcessor>(1.0f);
	auto const track = MakeClipTrack(context, {FakeItem::Make(1, 0, 1000, 0)},
		{.mProcessors = {log}, .mPanner = MakePanner(context, kPanMonoToStereo, {pan})});
	track->Preroll(At(0), false);
	ExpectBlocks(
		{
			{"before a change", 0, 39, false, At(40), {{0, 39}}},
			{"up to a change", 0, 40, false, At(40), {{0, 16}, {16, 16}, {32, 8}}},
			{"nothing changes: the grid starts over", 40, 12, false, kTimeMax, {{40, 12}}},
			{"a change again", 52, 20, false, At(52), {{52, 16}, {68, 4}}},
			{"on in the block", 72, 20, false, At(80), {{72, 12}, {84, 8}}},
			{"nothing again", 92, 1, false, kTimeMax, {{92, 1}}},
			{"in reverse, always in blocks", 100, 10, true, kTimeMax, {{110, 10}}},
			{"in reverse, less what is done of the block", 90, 10, true, kTimeMax, {{90, 6}, {84, 4}}},
		},
		*track, *log, pan->mNext);
}

TEST(ControlBlocks, OfAMixTrackGoOnOverRequestsAndTimesRiseInReverse)
{
	for (bool const pans : {false, true})
	{
		SCOPED_TRACE(pans ? "a pan" : "a fader");
		Prefetcher prefetcher;
		ScopedContext const context(64, &prefetcher);
		auto const gain = MakeObject<FakeParameter>(1.0f);
		auto const place = MakeObject<FakeParameter>(pans ? 0.0f : 0.5f);
		auto const log = MakeObject<FakeProcessor>(1.0f);
		// Where a pan that stands in the middle changes next does not count.
		place->mNext = At(0);
		auto const panner = MakePanner(context, pans ? kPanMonoToStereo : kPanStereoToStereo, {place});
		InterfaceRef<IParameterOwnerMixin>(panner)->UpdateControls(At(0));
		auto const fader = MakeFader(context, {gain, MakeObject<FakeParameter>(0.0f)});
		auto const track = MakeMixTrack(
			context, MakeObject<FakeGenerator>(1), {.mProcessors = {fader, log}, .mPanner = panner});
		ExpectBlocks(
			{
				{"before a change", 0, 39, false, At(40), {{0, 39}}},
				{"up to a change", 0, 40, false, At(40), {{0, 16}, {16, 16}, {32, 8}}},
				{"on in the block", 40, 10, false, At(40), {{40, 8}, {48, 2}}},
				{"in reverse, from the request's time on", 100, 20, true, kTimeMax, {{100, 14}, {114, 6}}},
				{"in reverse, on in the block", 80, 20, true, kTimeMax, {{80, 10}, {90, 10}}},
				{"nothing changes: the grid starts over", 50, 12, false, kTimeMax, {{50, 12}}},
				{"in reverse, from the start of a block", 100, 20, true, kTimeMax, {{100, 16}, {116, 4}}},
			},
			*track, *log, pans ? place->mNext : gain->mNext);
	}
}

} // namespace SN::ControlBlocksTest
