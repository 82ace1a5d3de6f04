#include "Command.h"

#include "Options/ListenerOptions.h"
#include "Options/SharedOptions.h"
#include "Options/StretchOptions.h"
#include "Serve/ServeSettings.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/Temporary.h"
#include "Terminal/OperatingSystem.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

constexpr int kDefaultPort = 8750;
constexpr int kHighestPort = 65535;
constexpr std::size_t kShortestToken = 16;
constexpr double kLongestWarmUp = 60.0;

// Where the XDG base directories put caches.
std::filesystem::path FindCacheFolder()
{
	char const* const cache = std::getenv("XDG_CACHE_HOME");
	char const* const home = std::getenv("HOME");
	std::filesystem::path const folder = cache && *cache != '\0' ? std::filesystem::path(cache)
										 : home && *home != '\0' ? std::filesystem::path(home) / ".cache"
																 : GetFolderOfTemporaries();
	return folder / "sonaro" / "peaks";
}

bool IsLoopbackName(std::string const& inHost)
{
	bool const isNumber =
		inHost.starts_with("127.") && inHost.find_first_not_of("0123456789.") == std::string::npos;
	return isNumber || inHost == "localhost" || inHost == "::1";
}

class ServeCommand final : public Command
{
public:
	explicit ServeCommand(CLI::App& ioProgram)
		: Command(ioProgram, "serve", "Serve a timeline to a browser, rendered as it is asked for")
	{
		Add("INPUT", mInput, "(required)", "Timeline (.otio, .otioz, .otiod)")->required();
		AddServerOptions();
		AddSoundOptions();
		AddTimelineOptions(GetParser(), mMediaFolders, mFades);
		mStretch.AddForAll(GetParser());
		mListener.AddOptions(GetParser());
		AddFlag("--quiet", mIsQuiet, "Print only warnings and errors");
		AddFlag("--json", mAsJson, "Print the address as JSON");
		GetParser().footer(
			"The page at the address that is printed plays the timeline: it shows tracks, clips, "
			"markers and\n"
			"loudness, and keeps comments in a file beside the timeline. Any range of /mix.wav "
			"and of\n"
			"/track/N.wav has the bytes of the file that \"sonaro render\" would write. The "
			"timeline is watched,\n"
			"and changes are taken over.\n"
			"\n"
			"Examples:\n"
			"  sonaro serve edit.otio\n"
			"  sonaro serve edit.otio --port 9000 --bits 24\n"
			"  sonaro serve edit.otio --binaural\n"
			"  sonaro serve edit.otio --bind 0.0.0.0 --token \"$(openssl rand -hex 16)\"");
	}

	int Run() override
	{
		if (!Otio::IsTimelinePath(mInput))
		{
			Refuse(QuotePath(mInput) + " is no timeline; serve accepts .otio, .otioz and .otiod");
		}
		CheckToken();
		return Serve::RunServer(MakeSettings());
	}

private:
	void AddServerOptions()
	{
		Add("--port", mPort, "PORT", "Port to listen on; 0 for any that is free (default: 8750)")
			->check(CLI::Range(0, kHighestPort));
		Add("--bind", mHost, "ADDRESS",
			"Address to listen on (default: 127.0.0.1, which only this machine reaches); any other needs "
			"--token");
		Add("--token", mToken, "TOKEN",
			"What clients have to know: 16 characters or more of A-Z, a-z, 0-9, - and _");
		Add("--cache", mCacheFolder, "DIR",
			"Folder for waveforms that were computed (default: sonaro/peaks in XDG_CACHE_HOME or ~/.cache)");
	}

	void AddSoundOptions()
	{
		Add("--bits", mBits, "BITS", "Samples of WAV: 16, 24 or 32f for 32-bit float (default: 32f)")
			->check(CLI::IsMember({"16", "24", "32f"}));
		Add("--jobs", mJobs, "N",
			"How many listeners are rendered for at once (default: one for each processor core, at least 2)")
			->check(CLI::Range(1u, kMostServeJobs));
		Add("--warm-up", mWarmUpSeconds, "SECONDS",
			"How much is rendered and discarded before a start in the middle, for effects that remember more "
			"than can be settled (default: 2)")
			->check(CLI::Range(0.0, kLongestWarmUp));
	}

	void CheckToken()
	{
		constexpr char kAllowed[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
		bool const isValid =
			mToken.size() >= kShortestToken && mToken.find_first_not_of(kAllowed) == std::string::npos;
		if (GetParser().get_option("--token")->count() > 0 && !isValid)
		{
			Refuse("--token: a token has 16 characters or more, of A-Z, a-z, 0-9, - and _");
		}
		if (mToken.empty() && !IsLoopbackName(mHost))
		{
			Refuse("--bind " + mHost + " lets other machines in; add --token, which they then have to know");
		}
	}

	Serve::ServeSettings MakeSettings() const
	{
		Serve::ServeSettings settings;
		settings.mHost = mHost;
		settings.mPort = mPort;
		settings.mToken = mToken;
		settings.mCacheFolder =
			mCacheFolder.empty() ? FindCacheFolder() : std::filesystem::path(mCacheFolder);
		settings.mIsQuiet = mIsQuiet;
		settings.mAsJson = mAsJson;
		SonaroHost::Serve::ServeRequest& request = settings.mRequest;
		request.mInput = mInput;
		request.mMediaFolders.assign(mMediaFolders.begin(), mMediaFolders.end());
		request.mOptions.mFadeShape = ParseFades(mFades);
		mStretch.Fill(request.mOptions);
		request.mOptions.mListener = mListener.MakeListener();
		request.mFormat.mSamples = mBits == "16"   ? OutputSamples::kInteger16
								   : mBits == "24" ? OutputSamples::kInteger24
												   : OutputSamples::kFloat32;
		request.mFormat.mDither = ChooseDither(request.mFormat.mSamples, 0, false);
		request.mMostGraphs = mJobs.value_or(std::max(CountUsableCores(), 2u));
		request.mWarmUpSeconds = mWarmUpSeconds;
		request.mVersion = SONARO_VERSION;
		return settings;
	}

	static constexpr unsigned kMostServeJobs = 64;

	std::string mInput;
	int mPort = kDefaultPort;
	std::string mHost = "127.0.0.1";
	std::string mToken;
	std::string mCacheFolder;
	std::string mBits;
	std::optional<unsigned> mJobs;
	double mWarmUpSeconds = 2.0;
	StretchOptions mStretch;
	ListenerOptions mListener;
	std::vector<std::string> mMediaFolders;
	std::string mFades;
	bool mIsQuiet = false;
	bool mAsJson = false;
};

} // namespace

std::unique_ptr<Command> MakeServeCommand(CLI::App& ioProgram)
{
	return std::make_unique<ServeCommand>(ioProgram);
}

} // namespace SonaroCommand
