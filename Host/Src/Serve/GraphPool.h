#pragma once

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Render/Programme.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost::Serve
{

// The origins of the outermost tracks that are left out.
using LeftOut = std::set<std::string>;

// A bounded number of graphs of one programme, for whoever wants a stretch of it. A graph is lent for one stretch and
// keeps its place, so that stretches that follow each other are one run, whoever else is served in between.
//
// Start    A stretch anywhere else begins with what the graph settles by itself. Where that does not give the samples of
//          one run from the start (see FindWhyInOneRun), the warm-up is rendered before it by a new graph and discarded:
//          samples depend on the place alone, not on what others heard before.
// Latency  Where that of an effect grows, another graph makes up for it, and renders again from where its run began.
// Errors   A HostError of the media or an effect; TooBusyError past the deadline.
// Threads  Any.
class GraphPool
{
public:
	using Clock = std::chrono::steady_clock;
	// Gets the frames in order, some at a time; they are another's as well.
	using Sink = std::function<void(dsp::AudioBuffer const& inBlock)>;

	struct Limits
	{
		unsigned mMostGraphs = 1;
		std::int64_t mWarmUpFrames = 0;
	};

	GraphPool(Programme inProgramme, Limits const& inLimits);
	~GraphPool();
	GraphPool(GraphPool const&) = delete;
	GraphPool& operator=(GraphPool const&) = delete;

	Programme const& GetProgramme() const { return mProgramme; }
	std::int64_t GetWarmUpFrames() const { return mLimits.mWarmUpFrames; }

	// As GraphReport::mWhyInOneRun of the graph without those tracks, which it makes if there is none.
	std::string FindWhyInOneRun(LeftOut const& inLeftOut, Clock::time_point inDeadline);

	void Render(LeftOut const& inLeftOut, ProgrammeRange const& inRange, Clock::time_point inDeadline,
		Sink const& inSink);
	// Throws the HostError of a former Render that failed within the range.
	void CheckRange(LeftOut const& inLeftOut, ProgrammeRange const& inRange) const;
	// The first such error in words; empty for none.
	std::string GetProblem() const;

private:
	// The block that could not be rendered, by its first frame.
	struct Failure
	{
		std::int64_t mFrame = 0;
		HostError mError;
	};
	class Slot;
	class Loan;

	Slot& Borrow(LeftOut const& inLeftOut, std::int64_t inFirstFrame, Clock::time_point inDeadline);
	// These two are called with the lock. Null while all are busy.
	Slot* FindFree(LeftOut const& inLeftOut, std::int64_t inFirstFrame);
	// Of those without these tracks; null for any.
	Slot* FindOldest(LeftOut const* inLeftOut) const;
	void GiveBack(Slot& ioSlot);
	void NoteFailure(LeftOut const& inLeftOut, Failure const& inFailure);

	Programme mProgramme;
	Limits mLimits;
	mutable std::mutex mMutex;
	std::condition_variable mGivenBack;
	std::map<LeftOut, Failure> mFailures;
	std::string mProblem;
	// Graphs that read the same media are made and freed one at a time.
	std::mutex mMaking;
	std::vector<std::unique_ptr<Slot>> mSlots;
};

} // namespace SonaroHost::Serve
