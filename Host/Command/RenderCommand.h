#pragma once

#include "Command.h"
#include "Options/RenderOptions.h"
#include "SonaroHost/Render/ClipRenderJob.h"
#include "TimelineRender.h"

#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

// "sonaro render INPUT ... -o OUTPUT": renders sound files as the clips of a track, or a timeline.
class RenderCommand final : public Command
{
public:
	explicit RenderCommand(CLI::App& ioProgram);

	int Run() override;
	std::string DescribeInputs() const override;

private:
	void AddFileOptions();
	void AddSoundOptions();
	void AddLevelOptions();
	void AddChannelOptions();
	// Of what is known of them before the render.
	static void WarnOfInputs(SonaroHost::ClipRenderJob const& inJob);

	// Throws a HostError for an option that a timeline has no use for.
	void CheckOptionsFitTimelines();
	// The options as the library takes them; throws a HostError for one that makes no sense.
	SonaroHost::ClipRenderRequest MakeRequest() const;
	std::vector<SonaroHost::ClipInput> MakeInputs() const;
	SonaroHost::ClipInput MakeOnlyInput() const;
	SonaroHost::LayoutRequest MakeLayoutRequest() const;
	// Warnings, and the summary in the form that was asked for.
	void Report(SonaroHost::ClipRenderJob const& inJob, SonaroHost::RenderSummary const& inSummary) const;
	// What --report writes.
	std::string DescribeReport(
		SonaroHost::ClipRenderJob const& inJob, SonaroHost::RenderSummary const& inSummary) const;
	void WarnOfMisses(SonaroHost::PlaybackSummary const& inPlayback) const;

	std::vector<std::string> mInputs;
	RenderOptions mOptions;
	TimelineRender mTimeline;
	std::vector<std::string> mPositions;
	std::string mStart;
	std::string mDuration;
	unsigned mStream = 0;
	std::string mChannels;
	std::optional<double> mPan;
	std::string mMixdown;
	bool mIsReverse = false;
	double mSpeed = 1.0;
	bool mIsPlayback = false;
};

} // namespace SonaroCommand
