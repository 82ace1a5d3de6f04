#include "OpenTimeline.h"

#include "Options/RenderOptions.h"
#include "Options/SharedOptions.h"
#include "Report/TimelineNotes.h"
#include "Report/TimelineRows.h"
#include "SonaroHost/Base/HostError.h"
#include "Terminal/UsageError.h"

#include <algorithm>
#include <chrono>

namespace SonaroPython
{

namespace
{

using namespace SonaroCommand;
using SonaroHost::Serve::MixFile;
using SonaroHost::Serve::ServeRequest;

// Far longer than any programme.
constexpr double kWholeSeconds = 1e7;

// The options that lay out a timeline, as the command has them.
class LayoutOptions
{
public:
	LayoutOptions()
		: mParser("Lays out a timeline", "sonaro.open")
	{
		mParser.set_help_flag();
		mParser.add_option("--rate", mOptions.mSampleRate);
		mParser.add_option("--layout", mOptions.mLayout);
		mParser.add_option("--resampling", mOptions.mResampling)
			->check(CLI::IsMember({"exact", "draft", "engine"}));
		mOptions.mStretch.AddForAll(mParser);
		mOptions.mListener.AddOptions(mParser);
		AddTimelineOptions(mParser, mMediaFolders, mFades);
	}

	// Throws a HostError.
	void Parse(std::vector<std::string> inArguments)
	{
		try
		{
			// The parser takes them from the end.
			std::reverse(inArguments.begin(), inArguments.end());
			mParser.parse(std::move(inArguments));
		}
		catch (CLI::ParseError const& error)
		{
			SonaroHost::Refuse("open: " + DescribeOptionError(mParser, error));
		}
	}

	void Fill(ServeRequest& outRequest) const
	{
		outRequest.mMediaFolders.assign(mMediaFolders.begin(), mMediaFolders.end());
		outRequest.mOptions.mSampleRate = mOptions.mSampleRate;
		outRequest.mOptions.mLayout = mOptions.ParseLayout();
		outRequest.mOptions.mFadeShape = ParseFades(mFades);
		outRequest.mOptions.mResampling = mOptions.ChooseResampling();
		mOptions.mStretch.Fill(outRequest.mOptions);
		outRequest.mOptions.mListener = mOptions.mListener.MakeListener();
	}

private:
	CLI::App mParser;
	RenderOptions mOptions;
	std::vector<std::string> mMediaFolders;
	std::string mFades;
};

ServeRequest MakeRequest(OpenTimeline::Settings const& inSettings)
{
	LayoutOptions options;
	options.Parse(inSettings.mArguments);
	ServeRequest request;
	request.mInput = inSettings.mPath;
	request.mText = inSettings.mText;
	options.Fill(request);
	request.mMostGraphs = inSettings.mReaders;
	request.mWarmUpSeconds = inSettings.mWarmUpSeconds < 0.0 ? kWholeSeconds : inSettings.mWarmUpSeconds;
	if (!SonaroHost::Otio::IsTimelinePath(inSettings.mPath))
	{
		SonaroHost::RefuseFile(inSettings.mPath, "is no timeline", "open accepts .otio, .otioz and .otiod");
	}
	return request;
}

} // namespace

OpenTimeline::OpenTimeline(Settings const& inSettings)
	: mTimeline(MakeRequest(inSettings))
{
}

unsigned OpenTimeline::GetNumChannels() const
{
	return static_cast<unsigned>(mTimeline.GetSequence().mLayout.size());
}

std::string OpenTimeline::DescribeAsJson() const
{
	auto const& sequence = mTimeline.GetSequence();
	Json tracks = Json::array();
	for (SonaroHost::Otio::TrackRow const* const row : mTimeline.GetTracks())
	{
		tracks.push_back(DescribeTrack(*row));
	}
	return ToText(Json{{"name", mTimeline.GetTimeline().mName}, {"programme", DescribeProgramme(sequence)},
		{"tracks", std::move(tracks)}, {"clips", ListClips(sequence.mClips)},
		{"markers", ListMarkers(sequence)}, {"missing", ListMissing(sequence.mMissing)},
		{"notes", ListNotes(mTimeline.GetNotes())}});
}

void OpenTimeline::Read(std::int64_t inFirst, std::int64_t inFrames, unsigned inTrack,
	std::span<float* const> outChannels, std::function<void()> const& inAfterBlock)
{
	SonaroHost::Serve::TrackChoice choice;
	if (inTrack != 0)
	{
		choice.mSoloed.insert(inTrack);
	}
	// There is no client who gives up.
	auto const deadline = MixFile::Clock::now() + std::chrono::hours(24 * 365);
	mTimeline.Read(choice, {inFirst, inFrames}, deadline, outChannels, inAfterBlock);
}

} // namespace SonaroPython
