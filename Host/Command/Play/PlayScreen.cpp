#include "PlayScreen.h"

#include "MeterBar.h"
#include "PlayControls.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "Terminal/OperatingSystem.h"
#include "Terminal/StopSignals.h"

// Its macros are named as functions of others.
#define NCURSES_NOMACROS 1
#include <curses.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

namespace
{

constexpr int kMillisecondsPerFrame = 50;
constexpr int kHeaderLines = 2;
constexpr int kFooterLines = 3;
constexpr char const* kHelp =
	"space play  arrows seek  jkl shuttle  i o x loop  up/down track  m s + - mix  e [ ] d b effects  q quit";
constexpr char const* kHelpWithHead =
	"space play  arrows seek  jkl shuttle  i o x loop  up/down track  m s + - mix  e [ ] d b effects  "
	"4 6 8 2 7 9 5 head  q quit";

// The terminal is the screen's as long as this lives.
class Curses
{
public:
	Curses()
	{
		// Names are UTF-8; numbers stay as they are.
		std::setlocale(LC_CTYPE, "");
		// The library would end the process at a signal in its own way.
		auto const interrupt = std::signal(SIGINT, SIG_IGN);
		auto const terminate = std::signal(SIGTERM, SIG_IGN);
		mScreen = newterm(nullptr, stdout, stdin);
		std::signal(SIGINT, interrupt);
		std::signal(SIGTERM, terminate);
		if (!mScreen)
		{
			return;
		}
		cbreak();
		noecho();
		keypad(stdscr, TRUE);
		curs_set(0);
		wtimeout(stdscr, kMillisecondsPerFrame);
	}
	~Curses()
	{
		if (mScreen)
		{
			endwin();
			delscreen(mScreen);
		}
	}
	Curses(Curses const&) = delete;
	Curses& operator=(Curses const&) = delete;

	bool IsShown() const { return mScreen != nullptr; }

private:
	SCREEN* mScreen = nullptr;
};

std::optional<PlayAction> FindAction(int inKey)
{
	static std::map<int, PlayAction> const kActions = {
		{' ', PlayAction::kToggle},
		{KEY_LEFT, PlayAction::kBack},
		{KEY_RIGHT, PlayAction::kForward},
		{KEY_SLEFT, PlayAction::kFarBack},
		{KEY_SRIGHT, PlayAction::kFarForward},
		{KEY_HOME, PlayAction::kHome},
		{'i', PlayAction::kLoopIn},
		{'o', PlayAction::kLoopOut},
		{'x', PlayAction::kClearLoop},
		{'j', PlayAction::kPlayBackwards},
		{'k', PlayAction::kStop},
		{'l', PlayAction::kPlayForwards},
		{KEY_UP, PlayAction::kPreviousTrack},
		{KEY_DOWN, PlayAction::kNextTrack},
		{'m', PlayAction::kMute},
		{'s', PlayAction::kSolo},
		{'+', PlayAction::kLouder},
		{'-', PlayAction::kSofter},
		// As they lie on a numeric keypad.
		{'4', PlayAction::kTurnLeft},
		{'6', PlayAction::kTurnRight},
		{'8', PlayAction::kTurnUp},
		{'2', PlayAction::kTurnDown},
		{'7', PlayAction::kTiltLeft},
		{'9', PlayAction::kTiltRight},
		{'5', PlayAction::kFaceFront},
		{'e', PlayAction::kNextControl},
		{'E', PlayAction::kPreviousControl},
		{']', PlayAction::kRaiseControl},
		{'[', PlayAction::kLowerControl},
		{'d', PlayAction::kReleaseControl},
		{'b', PlayAction::kToggleBypass},
	};
	auto const found = kActions.find(inKey);
	return found != kActions.end() ? std::optional(found->second) : std::nullopt;
}

std::string FormatLoudness(double inLoudness)
{
	std::array<char, 16> text{};
	std::snprintf(text.data(), text.size(), "%.1f", RoundToTenths(inLoudness));
	return std::isfinite(inLoudness) ? text.data() : "-";
}

class PlayScreen
{
public:
	PlayScreen(PlaySession& ioSession, std::string const& inTitle)
		: mSession(ioSession),
		  mControls(ioSession),
		  mTitle(SonaroHost::MakePrintable(inTitle))
	{
	}

	bool Run()
	{
		Curses const curses;
		if (!curses.IsShown())
		{
			return false;
		}
		mSession.GetPlayback().Play();
		for (int key = 0; key != 'q' && !StopSignals::GetToken().stop_requested(); key = wgetch(stdscr))
		{
			if (auto const action = FindAction(key))
			{
				mControls.Do(*action);
			}
			for (PlayEvent const& event : mSession.TakeEvents())
			{
				mControls.SetMessage(event.mText);
			}
			Draw();
		}
		return true;
	}

private:
	using State = SonaroHost::Playback::PlaybackState;

	void Draw()
	{
		werase(stdscr);
		State const state = mSession.GetPlayback().GetState();
		DrawHeader(state);
		DrawTracks();
		DrawMaster(state);
		wrefresh(stdscr);
	}

	// One line, cut off where the screen ends.
	static void PrintLine(int inLine, std::string const& inText, chtype inLook = A_NORMAL)
	{
		if (inLine < 0 || inLine >= getmaxy(stdscr))
		{
			return;
		}
		wattrset(stdscr, static_cast<int>(inLook));
		mvwaddnstr(stdscr, inLine, 0, inText.c_str(), std::max(getmaxx(stdscr) - 1, 0));
		wattrset(stdscr, static_cast<int>(A_NORMAL));
	}

	void DrawHeader(State const& inState)
	{
		std::string text = mSession.FormatPlace(inState.mFrame) + " / " +
						   mSession.FormatPlace(inState.mFrames) +
						   (inState.mIsPlaying ? "  playing" : "  stopped");
		text += inState.mSpeed != 1.0 ? " at " + SonaroHost::FormatNumber(inState.mSpeed) : "";
		if (inState.mLoop)
		{
			std::int64_t const first = inState.mLoop->mFirstFrame;
			text += "  loop " + mSession.FormatPlace(first) + " to " +
					mSession.FormatPlace(first + inState.mLoop->mFrames);
		}
		text += DescribeHead();
		text += inState.mMisses > 0 ? "  " + std::to_string(inState.mMisses) + " missed" : "";
		PrintLine(0, mTitle, A_BOLD);
		PrintLine(1, text);
	}

	std::string DescribeHead() const
	{
		SonaroHost::HeadOrientation const* const head = mSession.FindHead();
		if (!head)
		{
			return {};
		}
		SonaroHost::HeadAngles const angles = head->Get();
		auto const format = [](float inAngle)
		{ return SonaroHost::FormatNumber(static_cast<double>(inAngle)); };
		return "  head yaw " + format(angles.mYaw) + " pitch " + format(angles.mPitch) + " roll " +
			   format(angles.mRoll);
	}

	void DrawTracks()
	{
		SonaroHost::Playback::LiveMix& mix = mSession.GetMix();
		std::size_t const tracks = mix.CountTracks();
		mTrackBars.resize(tracks);
		int const masterLines = static_cast<int>(mSession.CountChannels());
		auto const lines = static_cast<std::size_t>(
			std::max(getmaxy(stdscr) - kHeaderLines - kFooterLines - masterLines, 1));
		// Those around the selected one.
		std::size_t const selected = mControls.GetSelectedTrack();
		std::size_t const first = selected >= lines ? selected - lines + 1 : 0;
		for (std::size_t track = 0; track < tracks; ++track)
		{
			mTrackBars[track].Update(mix.TakePeak(track), MeterBar::Clock::now());
			if (track >= first && track < first + lines)
			{
				PrintLine(kHeaderLines + static_cast<int>(track - first), DescribeTrack(track),
					track == selected ? A_REVERSE : A_NORMAL);
			}
		}
	}

	std::string DescribeTrack(std::size_t inTrack)
	{
		SonaroHost::Playback::LiveMix const& mix = mSession.GetMix();
		constexpr std::size_t kNameColumns = 20;
		std::string name = SonaroHost::MakePrintable(mix.GetName(inTrack));
		name = name.empty() ? "Track " + std::to_string(inTrack + 1) : name;
		name = std::string(SonaroHost::CutText(name, kNameColumns));
		name.resize(std::max(name.size(), kNameColumns), ' ');
		double const level = RoundToTenths(SonaroHost::ToDecibels(static_cast<double>(mix.GetGain(inTrack))));
		std::array<char, 16> gain{};
		std::snprintf(gain.data(), gain.size(), level == 0.0 ? "%6.1f" : "%+6.1f", level);
		return name + (mix.IsMuted(inTrack) ? " M" : "  ") + (mix.IsSolo(inTrack) ? "S " : "  ") +
			   gain.data() + " dB " + DescribeBar(mTrackBars[inTrack]);
	}

	void DrawMaster(State const& inState)
	{
		unsigned const channels = mSession.CountChannels();
		mMasterBars.resize(channels);
		int const first = std::max(getmaxy(stdscr) - kFooterLines - static_cast<int>(channels), kHeaderLines);
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			MeterBar& bar = mMasterBars[channel];
			bar.Update(mSession.GetPeaks().TakePeak(channel), MeterBar::Clock::now());
			std::string text = "Output " + std::to_string(channel + 1);
			text.resize(kBarColumn, ' ');
			PrintLine(
				first + static_cast<int>(channel), text + DescribeBar(bar), bar.IsOver() ? A_BOLD : A_NORMAL);
		}
		SonaroHost::LoudnessReading const loudness = mSession.GetLoudness();
		int const footer = getmaxy(stdscr) - kFooterLines;
		PrintLine(footer, "Loudness  momentary " + FormatLoudness(loudness.mMomentary) + "  short-term " +
							  FormatLoudness(loudness.mShortTerm) + "  integrated " +
							  FormatLoudness(loudness.mIntegrated) + " LUFS");
		std::string const& message = inState.mFailure.empty() ? mControls.GetMessage() : inState.mFailure;
		DrawMessage(footer + 1, SonaroHost::MakePrintable(message));
		PrintLine(footer + 2, mSession.FindHead() ? kHelpWithHead : kHelp, A_DIM);
	}

	// A long one covers what is above that line.
	static void DrawMessage(int inLastLine, std::string const& inText)
	{
		auto const columns = static_cast<std::size_t>(std::max(getmaxx(stdscr) - 1, 1));
		std::vector<std::string> lines;
		for (std::size_t begin = 0; begin < inText.size();)
		{
			std::size_t const space = inText.rfind(' ', begin + columns);
			bool const isLast = inText.size() - begin <= columns;
			bool const isSplit = !isLast && space != std::string::npos && space > begin;
			std::size_t const end = isLast ? inText.size() : isSplit ? space + 1 : begin + columns;
			lines.push_back(inText.substr(begin, end - begin));
			begin = end;
		}
		int line = inLastLine - static_cast<int>(lines.size()) + 1;
		for (std::string const& text : lines)
		{
			std::string row = text;
			row.resize(std::max(row.size(), columns), ' ');
			PrintLine(line++, row, A_BOLD);
		}
	}

	static std::string DescribeBar(MeterBar const& inBar)
	{
		constexpr int kLevelColumns = 10;
		int const columns =
			std::clamp(getmaxx(stdscr) - static_cast<int>(kBarColumn) - kLevelColumns, 4, 100);
		return "[" + inBar.Draw(static_cast<std::size_t>(columns)) + "]" + inBar.DescribeHeld();
	}

	// Where the bars begin.
	static constexpr std::size_t kBarColumn = 34;

	PlaySession& mSession;
	PlayControls mControls;
	std::string mTitle;
	std::vector<MeterBar> mTrackBars;
	std::vector<MeterBar> mMasterBars;
};

} // namespace

bool CanShowPlayScreen()
{
	return AreStandardStreamsTerminal();
}

bool ShowPlayScreen(PlaySession& ioSession, std::string const& inTitle)
{
	return PlayScreen(ioSession, inTitle).Run();
}

} // namespace SonaroCommand
