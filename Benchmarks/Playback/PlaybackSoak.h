#pragma once

#include "SoakDevice.h"
#include "SonaroHost/Playback/LiveMix.h"
#include "SonaroHost/Playback/Playback.h"
#include "SonaroHost/Sequence/FileMedia.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <vector>

namespace SonaroBenchmarks
{

// What a process holds.
struct Holdings
{
	static Holdings Count();

	double mMegabytes = 0.0;
	// Of these, the cached media.
	double mCachedMegabytes = 0.0;
	std::int64_t mFiles = 0;
	std::int64_t mThreads = 0;
};

// Plays a sound that counts its frames, cut into clips anew with every edit, among tracks that cannot be heard beside it,
// and does to it whatever can be done, in random order. What the device gets shows whether anything is lost.
class PlaybackSoak
{
public:
	// inFolder: for its sound, of 130 MB.
	PlaybackSoak(std::filesystem::path const& inFolder, double inSeconds, double inSpeed);

	// False where something was lost, wrong or growing, or is left at the end. Prints counts, each minute and at the end.
	bool Run();

private:
	using Playback = SonaroHost::Playback::Playback;

	void WriteSound(std::filesystem::path const& inPath);
	SonaroHost::Programme MakeEdit();
	void Act();
	void Seek();
	void SeekTo(std::int64_t inPlace);
	void ChangeLoop();
	void ChangeSpeed();
	void Pause();
	void Edit();
	void Lose();
	void ChangeMix();
	// Takes all cached media away that nobody reads at the moment.
	void Purge();
	// Stops, and holds the place that is shown against what was heard last.
	void CheckPlace();
	void Rest(double inSeconds) const;
	bool AwaitState(std::function<bool(SonaroHost::Playback::PlaybackState const&)> const& inIs) const;
	std::uint64_t Below(std::uint64_t inEnd) { return mRandom() % inEnd; }
	void PlayAtRandom();
	void Print(double inPassed);
	bool Judge() const;
	// Whether the memory at the end is what it was after a quarter of the time, but for a tenth and 16 MB.
	bool IsMemoryFlat() const;
	// What is there before playback begins and after it has ended is the same.
	static bool IsAllGivenBack(Holdings const& inBefore, Holdings const& inAfter);

	std::filesystem::path mFolder;
	double mSeconds;
	double mSpeed;
	std::mt19937_64 mRandom{1};
	SonaroHost::FileMedia mMedia;
	std::shared_ptr<SonaroHost::Sequence::Media const> mSound;
	SoakDevice mDevice;
	SonaroHost::Playback::LiveMix mMix;
	std::unique_ptr<Playback> mPlayback;
	double mPlaySpeed = 1.0;
	// How often what is heard was broken off, at most.
	std::uint64_t mBreaks = 0;
	std::uint64_t mActions = 0;
	std::uint64_t mEdits = 0;
	std::uint64_t mLosses = 0;
	std::uint64_t mPlaces = 0;
	std::uint64_t mWrongPlaces = 0;
	std::uint64_t mHangs = 0;
	std::uint64_t mPurges = 0;
	double mPurgedMegabytes = 0.0;
	std::vector<double> mMegabytes;
	std::optional<Holdings> mAtFirst;
	Holdings mNow;
};

} // namespace SonaroBenchmarks
