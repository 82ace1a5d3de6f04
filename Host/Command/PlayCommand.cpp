#include "Command.h"

#include "Options/ListenerOptions.h"
#include "Options/SharedOptions.h"
#include "Play/PlayLines.h"
#include "Play/PlayScreen.h"
#include "Play/TimelineWatch.h"
#include "Report/Json.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Playback/SoundDevices.h"
#include "Terminal/Console.h"
#include "Terminal/StopSignals.h"
#include "Terminal/TextTable.h"

#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

namespace
{

using namespace SonaroHost;

std::string ListDevicesForMachines(std::vector<Playback::SoundDeviceInfo> const& inDevices)
{
	Json list = Json::array();
	for (Playback::SoundDeviceInfo const& device : inDevices)
	{
		list.push_back({{"name", device.mName}, {"driver", device.mDriver}, {"channels", device.mChannels},
			{"rate", device.mSampleRate}, {"default", device.mIsDefault}});
	}
	return ToText(list);
}

std::string ListDevicesForPeople(std::vector<Playback::SoundDeviceInfo> const& inDevices)
{
	if (inDevices.empty())
	{
		return "no sound devices; null and file:PATH are always there\n";
	}
	std::vector<std::vector<std::string>> rows{{"", "Device", "Driver", "Channels", "Rate"}};
	for (Playback::SoundDeviceInfo const& device : inDevices)
	{
		rows.push_back({std::to_string(rows.size()) + (device.mIsDefault ? " *" : ""), device.mName,
			device.mDriver, std::to_string(device.mChannels), FormatNumber(device.mSampleRate)});
	}
	return FormatTable(rows);
}

class PlayCommand final : public Command
{
public:
	explicit PlayCommand(CLI::App& ioProgram)
		: Command(ioProgram, "play", "Play a sound file, a movie or a timeline on a sound device")
	{
		AddInputOptions();
		AddTransportOptions();
		AddDeviceOptions();
		GroupByInput(GetParser(), {"--stream"}, {"--media", "--fades", "--no-watch"});
		GetParser().footer(
			std::string(kTimesHelp) +
			" START and LOOP of timelines are also timecode or names of markers.\n\n"
			"Keys: space plays and stops; arrows seek by 1 second, with shift by 10; home; i and o set the "
			"loop, x clears it; j, k and l play backwards, stop and play, faster each time; up and down "
			"select a track, m mutes it, s is solo, + and - change its gain; e and E choose a control of an "
			"effect, [ and ] change it, d lets it go back to the timeline's; with --binaural, 4 and 6 turn "
			"the head to the left and right, 8 and 2 upwards and downwards, 7 and 9 tilt it, 5 faces the "
			"front; q quits\n\n"
			"Examples:\n"
			"  sonaro play edit.otio\n"
			"  sonaro play edit.otio --start 01:00:10:00 --loop \"Scene 4\"\n"
			"  sonaro play interview.flac --start 1:02.5 --speed 1.5\n"
			"  sonaro play film51.wav --binaural\n"
			"  sonaro play edit.otio --no-ui --json --device null");
	}

	int Run() override
	{
		if (mListsDevices)
		{
			auto const devices = Playback::ListSoundDevices();
			PrintResult(mAsJson ? ListDevicesForMachines(devices) : ListDevicesForPeople(devices));
			return kExitSuccess;
		}
		if (mInput.empty())
		{
			Refuse("INPUT is missing; give a sound file or a timeline");
		}
		return Play(MakeRequest());
	}

private:
	void AddInputOptions()
	{
		Add("INPUT", mInput, "", "Sound file or movie, or timeline (.otio, .otioz, .otiod)");
		AddStreamOption(GetParser(), mStream);
		AddTimelineOptions(GetParser(), mMediaFolders, mFades);
		Add("--rate", mSampleRate, "HZ", "Sample rate to play at (default: that of the input)")
			->check(CLI::Range(kLowestSampleRate, kHighestSampleRate));
		Add("--layout", mLayout, "LAYOUT",
			"Channel layout to play in: mono, stereo, 5.1, ambisonic1 or a number of channels (default: that "
			"of the input); with --binaural, that of the mix around the listener");
		mListener.AddOptions(GetParser());
	}

	void AddTransportOptions()
	{
		Add("--start", mStart, "TIME", "Where to start");
		Add("--loop", mLoop, "RANGE", "Go round in this range: START..END");
		Add("--speed", mSpeed, "FACTOR",
			"Speed, with the pitch following, from 0.01 to 4, or backwards from -0.01 to -4 (default: 1)");
		AddFlag("--no-watch", mIsUnwatched, "Do not take over changes of the timeline file while it plays");
	}

	void AddDeviceOptions()
	{
		Add("--device", mDevice, "NAME",
			"Device by its name, a part of it or its number in the list; null for none, or file:PATH to "
			"write "
			"what it would play as WAV (default: the system's)");
		AddFlag("--list-devices", mListsDevices, "List the sound devices, the default one with *, and end");
		Add("--ahead", mAheadMilliseconds, "MS",
			"Milliseconds that are rendered ahead, 5 to 1000; more survive longer interruptions, fewer "
			"answer sooner (default: 20)");
		AddFlag("--no-ui", mHasNoScreen,
			"Print a line each second instead of showing a screen; so it is without a terminal");
		AddFlag("--json", mAsJson, "Print events as JSON, one in each line; implies --no-ui");
	}

	PlayRequest MakeRequest()
	{
		if (!(mAheadMilliseconds >= 5.0 && mAheadMilliseconds <= 1000.0))
		{
			Refuse("--ahead: " + FormatNumber(mAheadMilliseconds) + " ms is out of range; use 5 to 1000 ms");
		}
		PlayRequest request;
		request.mInput = mInput;
		bool const isTimeline = request.IsTimeline();
		RefuseGroup(GetParser(), isTimeline ? kForSoundFiles : kForTimelines,
			isTimeline ? "applies only to sound files and movies; a timeline sets this itself"
					   : "applies only to timelines (.otio, .otioz, .otiod)");
		request.mMediaFolders.assign(mMediaFolders.begin(), mMediaFolders.end());
		request.mStream = mStream;
		request.mOutput = Playback::FindPlayedFile(mDevice);
		request.mTimeline.mSampleRate = mSampleRate;
		request.mTimeline.mFadeShape = ParseFades(mFades);
		if (!mLayout.empty())
		{
			request.mTimeline.mLayout = ParseLayout(mLayout);
			if (!request.mTimeline.mLayout)
			{
				Refuse("--layout: '" + mLayout +
					   "' is not a layout; use mono, stereo, 5.1, ambisonic1 or a number of channels "
					   "from 1 to 64, for 7.1 with --binaural 8");
			}
		}
		request.mTimeline.mListener = mListener.MakeListener();
		return request;
	}

	int Play(PlayRequest const& inRequest)
	{
		constexpr double kSecondsPerMillisecond = 0.001;
		PlaySession session(
			inRequest, Playback::MakeDevice(mDevice), mAheadMilliseconds * kSecondsPerMillisecond);
		PlayedInput const& input = session.GetFirstInput();
		Playback::Playback& playback = session.GetPlayback();
		playback.SetSpeed(mSpeed);
		if (!mLoop.empty())
		{
			playback.SetLoop(input.FindLoop(mLoop));
		}
		playback.Seek(mStart.empty() ? 0 : input.FindStart(mStart));
		std::optional<TimelineWatch> watch;
		if (inRequest.IsTimeline() && !mIsUnwatched)
		{
			watch.emplace(inRequest.mInput, [&session] { session.Reload(); });
		}
		bool const wantsScreen = !mHasNoScreen && !mAsJson && CanShowPlayScreen();
		if (!wantsScreen || !ShowPlayScreen(session, mInput))
		{
			PlayLines(session, mAsJson).Run();
		}
		watch.reset();
		session.Finish();
		return input.IsIncomplete() || session.HasFault() ? kExitMissing : kExitSuccess;
	}

	std::string mInput;
	unsigned mStream = 0;
	std::vector<std::string> mMediaFolders;
	std::string mFades;
	std::optional<int> mSampleRate;
	std::string mLayout;
	ListenerOptions mListener;
	std::string mStart;
	std::string mLoop;
	double mSpeed = 1.0;
	std::string mDevice;
	double mAheadMilliseconds = 20.0;
	bool mListsDevices = false;
	bool mHasNoScreen = false;
	bool mAsJson = false;
	bool mIsUnwatched = false;
};

} // namespace

std::unique_ptr<Command> MakePlayCommand(CLI::App& ioProgram)
{
	return std::make_unique<PlayCommand>(ioProgram);
}

} // namespace SonaroCommand
