#pragma once

#include "SonaroHost/Serve/ServedTimeline.h"
#include "SonaroHost/Waveform/Waveform.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace SonaroHost::Serve
{

// Waveforms of choices of tracks, for viewers: computed once on the engine's waveform thread, and kept on the disk by the
// tags of what they show.
//
// Threads  Any.
class PeakStore
{
public:
	// The samples of a column of the finest scale; the others have multiples.
	static constexpr std::int64_t kSamplesPerColumn = 256;

	// inFolder: where they are kept, made when it is needed; without a folder that can be written, they are computed anew
	// by each process. Files there that are not whole, or not as they were written, are replaced.
	explicit PeakStore(std::filesystem::path inFolder);
	// Ends what is being computed.
	~PeakStore();
	PeakStore(PeakStore const&) = delete;
	PeakStore& operator=(PeakStore const&) = delete;

	// Tries to write into the folder. Why nothing can be kept there, and empty where it can.
	std::string FindObstacle() const;

	// In the finest scale. Throws a TooBusyError when it is not there by the deadline, while it goes on being computed;
	// a HostError when it cannot be.
	std::shared_ptr<Waveform const> Get(std::shared_ptr<ServedTimeline> const& inTimeline,
		TrackChoice const& inChoice, MixFile::Clock::time_point inDeadline);

private:
	// One that is there, failed or is being computed.
	struct Entry
	{
		std::shared_ptr<Waveform const> mWaveform;
		std::exception_ptr mFailure;
	};

	void Begin(std::shared_ptr<ServedTimeline> const& inTimeline, TrackChoice const& inChoice,
		std::string const& inTag);
	std::shared_ptr<Waveform const> Compute(ServedTimeline& ioTimeline, TrackChoice const& inChoice) const;
	std::shared_ptr<Waveform const> Load(std::string const& inTag) const;
	void Save(std::string const& inTag, Waveform const& inWaveform) const noexcept;
	void RemoveOldest() const;

	std::filesystem::path mFolder;
	std::atomic<bool> mIsEnding = false;
	std::mutex mMutex;
	std::condition_variable mChanged;
	std::map<std::string, Entry> mEntries;
	// Tasks that were queued and have not ended.
	int mTasks = 0;
};

// The waveform in a coarser scale: so many columns become one.
Waveform Reduce(Waveform const& inWaveform, std::int64_t inColumns);

// Minima and maxima with 16 bits in the form of viewers in browsers, version 2, as WaveformJob writes them.
std::string MakePeakJson(Waveform const& inWaveform);
std::string MakePeakDat(Waveform const& inWaveform);

} // namespace SonaroHost::Serve
