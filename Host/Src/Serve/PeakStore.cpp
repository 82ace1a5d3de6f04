#include "SonaroHost/Serve/PeakStore.h"

#include "Files/SystemFiles.h"
#include "Sonaro/AudioWaveformQueue.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Serve/TooBusyError.h"
#include "SonaroHost/Waveform/PeakColumn.h"
#include "StateTag.h"
#include "Waveform/WaveformData.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

namespace SonaroHost::Serve
{

namespace
{

// Frames of a stretch, after which others may have the graph.
constexpr std::int64_t kPeakFrames = 16384;
// How long a waveform waits for its graph, since those who listen come first.
constexpr auto kPeakPatience = std::chrono::minutes(10);
constexpr std::size_t kMostEntries = 64;
constexpr std::size_t kMostPeakFiles = 500;
constexpr int kPeakBits = 16;

// Of a file: after its peaks stands this digest of them and of its name.
constexpr std::size_t kDigestBytes = 32;

std::string MakeDigest(std::string const& inTag, std::string const& inBytes)
{
	StateTag digest;
	digest.Add(inTag);
	digest.Add(inBytes);
	return digest.GetText();
}

// Gathers columns of all channels while blocks come.
class ColumnGatherer
{
public:
	explicit ColumnGatherer(Waveform& ioWaveform)
		: mWaveform(ioWaveform),
		  mColumns(ioWaveform.mChannels.size())
	{
	}

	void Add(dsp::AudioBuffer const& inBlock)
	{
		for (unsigned first = 0; first < inBlock.GetUseSize();)
		{
			auto const left = static_cast<unsigned>(mWaveform.mSamplesPerColumn - mFrames);
			unsigned const count = std::min(left, inBlock.GetUseSize() - first);
			for (unsigned channel = 0; channel < mColumns.size(); ++channel)
			{
				bool const isSilent = inBlock.IsChannelSilent(channel);
				mColumns[channel].Add(isSilent ? nullptr : inBlock.GetChannel(channel) + first, count);
			}
			first += count;
			mFrames += count;
			if (mFrames == mWaveform.mSamplesPerColumn)
			{
				Flush();
			}
		}
	}

	// The last column, which may have fewer frames.
	void Flush()
	{
		for (std::size_t channel = 0; mFrames > 0 && channel < mColumns.size(); ++channel)
		{
			PeakColumn const column = std::exchange(mColumns[channel], PeakColumn());
			for (float const value : {column.GetMinimum(), column.GetMaximum(), column.GetRms()})
			{
				mWaveform.mChannels[channel].push_back(value);
			}
		}
		mFrames = 0;
	}

private:
	Waveform& mWaveform;
	std::vector<PeakColumn> mColumns;
	std::int64_t mFrames = 0;
};

} // namespace

PeakStore::PeakStore(std::filesystem::path inFolder)
	: mFolder(std::move(inFolder))
{
}

PeakStore::~PeakStore()
{
	mIsEnding = true;
	std::unique_lock lock(mMutex);
	mChanged.wait(lock, [this] { return mTasks == 0; });
}

std::shared_ptr<Waveform const> PeakStore::Get(std::shared_ptr<ServedTimeline> const& inTimeline,
	TrackChoice const& inChoice, MixFile::Clock::time_point inDeadline)
{
	std::string const tag = inTimeline->OpenWave(inChoice, inDeadline)->GetTag();
	std::unique_lock lock(mMutex);
	if (!mEntries.contains(tag))
	{
		if (auto const loaded = Load(tag))
		{
			return mEntries.emplace(tag, Entry{loaded, nullptr}).first->second.mWaveform;
		}
		Begin(inTimeline, inChoice, tag);
	}
	auto const isDone = [&]
	{
		auto const found = mEntries.find(tag);
		return found == mEntries.end() || found->second.mWaveform || found->second.mFailure;
	};
	if (!mChanged.wait_until(lock, inDeadline, isDone) || !mEntries.contains(tag))
	{
		throw TooBusyError("the waveform is being computed; try again later");
	}
	if (mEntries[tag].mFailure)
	{
		std::rethrow_exception(std::exchange(mEntries.extract(tag).mapped().mFailure, nullptr));
	}
	return mEntries[tag].mWaveform;
}

// Called with the lock.
void PeakStore::Begin(
	std::shared_ptr<ServedTimeline> const& inTimeline, TrackChoice const& inChoice, std::string const& inTag)
{
	if (mEntries.size() >= kMostEntries)
	{
		std::erase_if(mEntries, [](auto const& inEntry) { return inEntry.second.mWaveform != nullptr; });
	}
	mEntries.emplace(inTag, Entry());
	++mTasks;
	auto const task = [this, inTimeline, inChoice, inTag]
	{
		Entry entry;
		try
		{
			entry.mWaveform = Compute(*inTimeline, inChoice);
			Save(inTag, *entry.mWaveform);
		}
		catch (...)
		{
			entry.mFailure = std::current_exception();
		}
		std::lock_guard const lock(mMutex);
		mEntries[inTag] = std::move(entry);
		--mTasks;
		mChanged.notify_all();
	};
	// A queue that is cleared in between refuses; the next one is new.
	while (!SN::AudioWaveformQueue::GetQueue()->Queue(task))
	{
	}
}

std::shared_ptr<Waveform const> PeakStore::Compute(
	ServedTimeline& ioTimeline, TrackChoice const& inChoice) const
{
	auto const& sequence = ioTimeline.GetSequence();
	auto waveform = std::make_shared<Waveform>(
		Waveform{sequence.mSampleRate, kSamplesPerColumn, {sequence.mLayout.size(), std::vector<float>()}});
	ColumnGatherer gatherer(*waveform);
	for (std::int64_t first = 0; first < sequence.mFrames; first += kPeakFrames)
	{
		if (mIsEnding)
		{
			throw TooBusyError("the program ends");
		}
		ioTimeline.Hear(inChoice, {first, std::min(kPeakFrames, sequence.mFrames - first)},
			MixFile::Clock::now() + kPeakPatience,
			[&](dsp::AudioBuffer const& inBlock) { gatherer.Add(inBlock); });
	}
	gatherer.Flush();
	return waveform;
}

std::shared_ptr<Waveform const> PeakStore::Load(std::string const& inTag) const
{
	std::ifstream file(mFolder / (inTag + ".dat"), std::ios::binary);
	std::ostringstream text;
	text << file.rdbuf();
	std::string bytes = text.str();
	std::size_t const length = bytes.size() - std::min(bytes.size(), kDigestBytes);
	std::string const digest = bytes.substr(length);
	bytes.resize(length);
	if (digest != MakeDigest(inTag, bytes))
	{
		return nullptr;
	}
	auto waveform = ReadWaveformDat(bytes);
	return waveform && waveform->mSamplesPerColumn == kSamplesPerColumn
			   ? std::make_shared<Waveform const>(std::move(*waveform))
			   : nullptr;
}

void PeakStore::Save(std::string const& inTag, Waveform const& inWaveform) const noexcept
{
	try
	{
		std::filesystem::create_directories(mFolder);
		std::string bytes = MakePeakDat(inWaveform);
		bytes += MakeDigest(inTag, bytes);
		OutputFile file(mFolder / (inTag + ".dat"));
		file.Write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
		file.Commit();
		RemoveOldest();
	}
	catch (std::exception const&)
	{
		// It is there in memory, and another process computes it again.
	}
}

std::string PeakStore::FindObstacle() const
{
	// As much as the smallest files take.
	constexpr std::size_t kProbeBytes = 4096;
	std::error_code error;
	std::filesystem::create_directories(mFolder, error);
	if (error)
	{
		return "it cannot be made: " + error.message();
	}
	try
	{
		std::string const bytes(kProbeBytes, '\0');
		OutputFile file(mFolder / "probe");
		file.Write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
		file.Close();
		return {};
	}
	catch (std::exception const& failure)
	{
		return failure.what();
	}
}

void PeakStore::RemoveOldest() const
{
	std::vector<std::pair<std::filesystem::file_time_type, std::filesystem::path>> files;
	for (std::string const& name : ListNames(mFolder))
	{
		if (std::filesystem::path const path = mFolder / name; path.extension() == ".dat")
		{
			files.emplace_back(std::filesystem::last_write_time(path), path);
		}
	}
	std::sort(files.begin(), files.end());
	std::size_t const surplus = files.size() - std::min(files.size(), kMostPeakFiles);
	for (std::size_t i = 0; i < surplus; ++i)
	{
		std::error_code error;
		std::filesystem::remove(files[i].second, error);
	}
}

Waveform Reduce(Waveform const& inWaveform, std::int64_t inColumns)
{
	auto const step = static_cast<std::size_t>(std::max<std::int64_t>(inColumns, 1));
	Waveform reduced{inWaveform.mSampleRate, inWaveform.mSamplesPerColumn * static_cast<std::int64_t>(step),
		{inWaveform.mChannels.size(), std::vector<float>()}};
	std::size_t const columns = inWaveform.GetNumColumns();
	for (std::size_t channel = 0; channel < inWaveform.mChannels.size(); ++channel)
	{
		for (std::size_t first = 0; first < columns; first += step)
		{
			Waveform::Column const column =
				Join(inWaveform, channel, channel + 1, first, std::min(first + step, columns));
			reduced.mChannels[channel].insert(
				reduced.mChannels[channel].end(), {column.mMinimum, column.mMaximum, column.mRms});
		}
	}
	return reduced;
}

std::string MakePeakJson(Waveform const& inWaveform)
{
	std::string text;
	WriteWaveformJson(inWaveform, kPeakBits, [&](std::string_view inBytes) { text += inBytes; });
	return text;
}

std::string MakePeakDat(Waveform const& inWaveform)
{
	std::string bytes;
	WriteWaveformDat(inWaveform, kPeakBits, [&](std::string_view inBytes) { bytes += inBytes; });
	return bytes;
}

} // namespace SonaroHost::Serve
