#pragma once

#include "ListenerOptions.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Render/FarmPlan.h"
#include "SonaroHost/Render/OutputRequest.h"
#include "SonaroHost/Sequence/Resampling.h"
#include "StretchOptions.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Farm
{
class PieceSet;
}

namespace SonaroCommand
{

// A plan and its pieces.
struct JoinedPlan
{
	SonaroHost::FarmPlan mPlan;
	// The one that joins them.
	std::string mProgram;
	std::shared_ptr<SonaroHost::Farm::PieceSet const> mPieces;
	// The files of both, which no output may replace.
	std::vector<std::filesystem::path> mFiles;
};

// The options of "sonaro render" that mean the same for sound files and timelines, as they were given.
struct RenderOptions
{
	std::string mOutput;
	std::string mFormat;
	std::string mBits;
	std::string mDither;
	std::string mLayout;
	std::optional<int> mSampleRate;
	std::string mResampling;
	StretchOptions mStretch;
	ListenerOptions mListener;
	std::optional<unsigned> mBlockFrames;
	std::optional<unsigned> mJobs;
	double mGainDecibels = 0.0;
	std::string mFadeIn;
	std::string mFadeOut;
	std::string mTail;
	SonaroHost::OutputLevels mLevels;
	std::string mReport;
	bool mKeepsOldFile = false;
	bool mIsQuiet = false;
	bool mAsJson = false;
	// Empty without it.
	std::string mStrict;
	// The plan whose pieces are joined in place of a render; null for a render.
	std::shared_ptr<JoinedPlan const> mJoined;

	// Those of a timeline's render that a plan may hold, in parts, so that commands list them where they belong.
	void AddFormat(CLI::App& ioParser);
	void AddBlock(CLI::App& ioParser);
	void AddRate(CLI::App& ioParser);
	void AddLevels(CLI::App& ioParser);
	void AddLayout(CLI::App& ioParser);
	void AddTail(CLI::App& ioParser);
	void AddStrict(CLI::App& ioParser);

	// These throw a HostError for what makes no sense.
	SonaroHost::OutputContainer ChooseContainer() const;
	std::optional<SN::AudioChannelLayout> ParseLayout() const;
	SonaroHost::Sequence::Resampling ChooseResampling() const;
	// Whether the report is a page of HTML, by its name.
	bool WantsPage() const;
	// What --strict refuses: missing media, or whatever is not as it should be.
	bool IsStrict() const { return !mStrict.empty(); }
	bool IsStrictInAll() const { return IsStrict() && mStrict != kStrictInMedia; }
	static constexpr char const* kStrictInMedia = "media";
	// Fills in all of a request but its container.
	void Fill(SonaroHost::OutputRequest& outRequest) const;
};

} // namespace SonaroCommand
