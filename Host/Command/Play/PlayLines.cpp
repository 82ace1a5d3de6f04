#include "PlayLines.h"

#include "MeterBar.h"
#include "Report/Json.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "Terminal/Console.h"
#include "Terminal/StopSignals.h"

#include <cmath>
#include <thread>

namespace SonaroCommand
{

namespace
{

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kLook = 20ms;

// An event in one line; minus infinity is null.
void PrintEvent(Json const& inEvent)
{
	PrintResult(inEvent.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
}

std::string FormatLevel(double inLevel, char const* inUnit)
{
	return std::isfinite(inLevel) ? SonaroHost::FormatNumber(RoundToTenths(inLevel)) + inUnit
								  : std::string("silent");
}

} // namespace

void PlayLines::Run()
{
	SonaroHost::Playback::Playback& playback = mSession.GetPlayback();
	PrintStart(playback.GetState());
	playback.Play();
	Clock::time_point next = Clock::now() + 1s;
	State state;
	for (bool hasEnded = false; !hasEnded && !StopSignals::GetToken().stop_requested();)
	{
		std::this_thread::sleep_for(kLook);
		// Commands that are done now are in the state.
		bool const isSettled = playback.WaitUntilFilled(0ms);
		state = playback.GetState();
		hasEnded = isSettled && HasEnded(state);
		PrintEvents();
		if (!state.mFailure.empty())
		{
			throw SonaroHost::HostError(SonaroHost::HostError::Kind::kOutput, state.mFailure);
		}
		if (Clock::now() >= next)
		{
			PrintPlace(state);
			next += 1s;
		}
	}
	PrintEnd(state);
}

bool PlayLines::HasEnded(State const& inState)
{
	return !inState.mIsPlaying && inState.mFrame == (inState.mSpeed < 0.0 ? 0 : inState.mFrames);
}

void PlayLines::PrintStart(State const& inState)
{
	if (mAsJson)
	{
		PrintEvent({{"event", "start"}, {"samples", inState.mFrames}, {"rate", mSession.GetSampleRate()},
			{"channels", mSession.CountChannels()}, {"tracks", mSession.GetMix().CountTracks()}});
	}
}

void PlayLines::PrintPlace(State const& inState)
{
	double const peak = SonaroHost::ToDecibels(static_cast<double>(mSession.GetPeaks().TakePeak()));
	SonaroHost::LoudnessReading const loudness = mSession.GetLoudness();
	std::string const place = mSession.FormatPlace(inState.mFrame);
	if (mAsJson)
	{
		auto const orNull = [](double inLevel) { return std::isfinite(inLevel) ? Json(inLevel) : Json(); };
		PrintEvent({{"event", "position"}, {"sample", inState.mFrame}, {"place", place},
			{"seconds", static_cast<double>(inState.mFrame) / mSession.GetSampleRate()},
			{"playing", inState.mIsPlaying}, {"speed", inState.mSpeed}, {"peak", orNull(peak)},
			{"momentary", orNull(loudness.mMomentary)}, {"shortTerm", orNull(loudness.mShortTerm)},
			{"integrated", orNull(loudness.mIntegrated)}, {"misses", inState.mMisses},
			{"unreadSamples", inState.mUnreadFrames}});
		return;
	}
	std::string const misses = inState.mMisses > 0
								   ? ", " + SonaroHost::FormatCount(inState.mMisses, "block") + " missed"
								   : std::string();
	PrintResult(place + "  peak " + FormatLevel(peak, " dBFS") + ", loudness " +
				FormatLevel(loudness.mShortTerm, " LUFS") + misses + "\n");
}

void PlayLines::PrintEvents()
{
	for (PlayEvent const& event : mSession.TakeEvents())
	{
		using Kind = PlayEvent::Kind;
		if (mAsJson)
		{
			PrintEvent({{"event", event.mKind == Kind::kReload      ? "reload"
								  : event.mKind == Kind::kBadReload ? "reloadFailed"
																	: "fault"},
				{"message", event.mText}});
		}
		else if (event.mKind == Kind::kReload)
		{
			PrintResult(event.mText + "\n");
		}
		else
		{
			PrintWarning(event.mText);
		}
	}
}

void PlayLines::PrintEnd(State const& inState)
{
	if (mAsJson)
	{
		PrintEvent({{"event", "end"}, {"sample", inState.mFrame}, {"misses", inState.mMisses},
			{"missedSamples", inState.mMissedFrames}, {"unreadSamples", inState.mUnreadFrames}});
		return;
	}
	if (inState.mMisses > 0)
	{
		PrintWarning(SonaroHost::FormatCount(inState.mMisses, "block") +
					 " came too late, and silence was heard in their place; raise --ahead");
	}
	if (inState.mUnreadFrames > 0)
	{
		PrintWarning(SonaroHost::FormatCount(inState.mUnreadFrames, "sample") +
					 " of media were silent, since there was no memory for them");
	}
}

} // namespace SonaroCommand
