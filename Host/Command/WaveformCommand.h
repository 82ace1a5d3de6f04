#pragma once

#include "Command.h"
#include "SonaroHost/Render/TimelineWaveformJob.h"
#include "SonaroHost/Render/WaveformJob.h"

#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

// "sonaro waveform INPUT -o OUTPUT": draws the waveform of a sound file or a timeline, or writes it for other programs.
class WaveformCommand final : public Command
{
public:
	explicit WaveformCommand(CLI::App& ioProgram);

	int Run() override;
	std::string DescribeInputs() const override;

private:
	void AddFileOptions();
	void AddRangeOptions();
	void AddPictureOptions();

	// The options as the library takes them; throws a HostError for one that makes no sense.
	SonaroHost::WaveformRequest MakeRequest();
	SonaroHost::TimelineWaveformRequest MakeTimelineRequest();
	SonaroHost::WaveformStyle MakeStyle() const;
	// Throws a HostError for an option that the format has no use for.
	void CheckOptionsFit(SonaroHost::WaveformFormat inFormat);
	template <class Request, class Summary>
	void Report(Request const& inRequest, Summary const& inSummary) const;

	std::string mInput;
	std::string mOutput;
	std::string mFormat;
	std::string mStart;
	std::string mDuration;
	std::optional<std::int64_t> mWidth;
	std::optional<std::int64_t> mSamplesPerColumn;
	unsigned mStream = 0;
	std::string mChannels = "stacked";
	unsigned mHeight;
	std::string mTheme;
	std::string mBackground;
	std::string mWave;
	std::string mRms;
	std::string mScale = "linear";
	double mFloorDecibels;
	int mBits = 16;
	std::vector<std::string> mMediaFolders;
	std::string mFades;
	bool mKeepsOldFile = false;
	bool mIsQuiet = false;
	bool mAsJson = false;
};

} // namespace SonaroCommand
