#include "Routes.h"

#include "Answers.h"
#include "PageFiles.h"
#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Serve/TooBusyError.h"
#include "TimelineJson.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <utility>

namespace SonaroCommand::Serve
{

using namespace SonaroHost::Serve;
using SonaroHost::ProgrammeRange;

namespace
{

// How long a request waits for peaks and measurements before it is asked to come again.
constexpr auto kPatience = std::chrono::seconds(10);
constexpr auto kHeartbeat = std::chrono::seconds(15);
constexpr auto kEventStep = std::chrono::milliseconds(200);
constexpr char kNothing[] = "there is nothing of that name";
constexpr char kJson[] = "application/json";
constexpr std::int64_t kMostSamplesPerPixel = std::int64_t{1} << 24;

char const* FindType(std::string const& inName)
{
	return inName.ends_with(".html")  ? "text/html; charset=utf-8"
		   : inName.ends_with(".js")  ? "text/javascript; charset=utf-8"
		   : inName.ends_with(".css") ? "text/css; charset=utf-8"
									  : "image/svg+xml";
}

httplib::Headers MakeSafetyHeaders()
{
	return {{"X-Content-Type-Options", "nosniff"}, {"X-Frame-Options", "DENY"},
		{"Referrer-Policy", "no-referrer"}, {"Cross-Origin-Resource-Policy", "same-origin"},
		{"Cross-Origin-Opener-Policy", "same-origin"},
		{"Content-Security-Policy",
			"default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; "
			"media-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"}};
}

Json ParseComment(std::string const& inBody)
{
	Json json = Json::parse(inBody, nullptr, false);
	if (json.is_discarded())
	{
		throw RefusedRequest{400, "the content is no valid JSON"};
	}
	return json;
}

// Whether a request goes no further, and is answered already.
bool RefuseRequest(HttpServer const& inServer, Access const& inAccess, httplib::Request const& inRequest,
	httplib::Response& outResponse)
{
	std::string reason;
	int status = inAccess.Check(inRequest, reason);
	std::string const methods = status == 0 ? inServer.ListMethods(inRequest.path) : std::string();
	if (status == 0 && methods.empty())
	{
		status = 404;
		reason = kNothing;
	}
	else if (status == 0 && methods.find(inRequest.method) == std::string::npos)
	{
		status = 405;
		reason = "this address takes " + methods;
		outResponse.set_header("Allow", methods);
	}
	bool const isChange = inRequest.method != "GET" && inRequest.method != "HEAD";
	status = status == 0 && isChange ? Access::CheckChange(inRequest, reason) : status;
	if (status != 0)
	{
		AnswerError(outResponse, status, reason);
	}
	return status != 0;
}

// What a comment that is not valid is refused with.
template <class Change>
auto ChangeComments(Change const& inChange)
{
	try
	{
		return inChange();
	}
	catch (SonaroHost::HostError const& error)
	{
		if (error.GetKind() == SonaroHost::HostError::Kind::kRequest)
		{
			throw RefusedRequest{422, error.what()};
		}
		throw;
	}
}

} // namespace

Routes::Routes(ServeSettings const& inSettings)
	: mWatch(inSettings.mRequest, mEvents),
	  mComments(inSettings.mRequest.mInput),
	  mPeaks(inSettings.mCacheFolder),
	  mAnalysis(mEvents)
{
}

void Routes::Enter(HttpServer& ioServer, Access const& inAccess)
{
	ioServer.set_default_headers(MakeSafetyHeaders());
	ioServer.set_pre_routing_handler(
		[inAccess, &ioServer](Request const& inRequest, Response& outResponse)
		{
			if (RefuseRequest(ioServer, inAccess, inRequest, outResponse))
			{
				return HttpServer::HandlerResponse::Handled;
			}
			std::string const cookie = inAccess.MakeCookie(inRequest);
			if (cookie.empty() || inRequest.path != "/")
			{
				return HttpServer::HandlerResponse::Unhandled;
			}
			// The token does not stay in the address.
			outResponse.set_header("Set-Cookie", cookie);
			outResponse.set_redirect("/", 303);
			return HttpServer::HandlerResponse::Handled;
		});
	ioServer.set_exception_handler(
		[this](Request const& inRequest, Response& outResponse, std::exception_ptr inException)
		{
			AnswerException(outResponse, std::move(inException));
			// Media that are replaced fail to be read, until the watch has opened them anew.
			if (outResponse.status == 500 && !inRequest.path.starts_with("/comments") &&
				!mWatch.Get()->IsCurrent())
			{
				AnswerError(outResponse, 503, "the timeline or its media have just changed; try again later");
			}
		});
	ioServer.set_error_handler(
		[](Request const&, Response& outResponse)
		{
			if (outResponse.body.empty())
			{
				AnswerError(outResponse, outResponse.status,
					outResponse.status == 404 ? kNothing : "the request is not valid");
			}
		});
	EnterSound(ioServer);
	EnterFacts(ioServer);
	EnterComments(ioServer);
	EnterPage(ioServer);
}

void Routes::EnterSound(HttpServer& ioServer)
{
	ioServer.Enter("GET", "/mix\\.wav",
		[this](Request const& inRequest, Response& outResponse)
		{
			AnswerWave(inRequest, outResponse,
				mWatch.Get()->OpenWave(ReadTrackChoice(inRequest), GetRenderDeadline()));
		});
	ioServer.Enter("GET", "/mix\\.flac",
		[this](Request const& inRequest, Response& outResponse) { AnswerFlac(inRequest, outResponse); });
	ioServer.Enter("GET", "/track/(\\d{1,9})\\.wav",
		[this](Request const& inRequest, Response& outResponse) { AnswerTrack(inRequest, outResponse); });
}

void Routes::AnswerFlac(Request const& inRequest, Response& outResponse)
{
	auto const most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max() / 2);
	auto const find = [&](char const* inName)
	{ return static_cast<std::int64_t>(std::min(FindNumber(inRequest, inName).value_or(most), most)); };
	ProgrammeRange const range{inRequest.has_param("start") ? find("start") : 0, find("samples")};
	AnswerStream(
		inRequest, outResponse, mWatch.Get()->OpenFlac(ReadTrackChoice(inRequest), range), "audio/flac");
}

void Routes::AnswerTrack(Request const& inRequest, Response& outResponse)
{
	TrackChoice choice;
	choice.mSoloed.insert(static_cast<unsigned>(ParseNumber(inRequest.matches[1].str(), "track")));
	AnswerWave(inRequest, outResponse, mWatch.Get()->OpenWave(choice, GetRenderDeadline()));
}

void Routes::EnterFacts(HttpServer& ioServer)
{
	ioServer.Enter("GET", "/timeline\\.json",
		[this](Request const& inRequest, Response& outResponse) { AnswerTimeline(inRequest, outResponse); });
	ioServer.Enter("GET", "/peaks/(mix|\\d{1,9})/(\\d{1,9})\\.(dat|json)",
		[this](Request const& inRequest, Response& outResponse) { AnswerPeaks(inRequest, outResponse); });
	auto const enter = [&](char const* inPath, std::string Analysis::Texts::*inText)
	{
		ioServer.Enter("GET", inPath,
			[this, inText](Request const& inRequest, Response& outResponse)
			{
				auto const timeline = mWatch.Get();
				auto const texts = mAnalysis.Get(timeline, MixFile::Clock::now() + kPatience);
				AnswerTagged(inRequest, outResponse, timeline->GetTag(), (*texts).*inText, kJson);
			});
	};
	enter("/report\\.json", &Analysis::Texts::mReport);
	enter("/loudness\\.json", &Analysis::Texts::mLoudness);
	ioServer.Enter("GET", "/events",
		[this, &ioServer](Request const&, Response& outResponse) { AnswerEvents(ioServer, outResponse); });
}

void Routes::AnswerTimeline(Request const& inRequest, Response& outResponse)
{
	auto const timeline = mWatch.Get();
	Json json = DescribeTimeline(*timeline);
	std::string const problem = mWatch.GetProblem();
	json["problem"] = problem.empty() ? Json() : Json(problem);
	std::string const mark = problem.empty() ? "" : "-" + std::to_string(std::hash<std::string>()(problem));
	std::string const tag = timeline->GetTag() + mark;
	AnswerTagged(inRequest, outResponse, tag, ToText(json), kJson);
}

void Routes::AnswerPeaks(Request const& inRequest, Response& outResponse)
{
	auto const timeline = mWatch.Get();
	TrackChoice choice;
	if (std::string const track = inRequest.matches[1]; track != "mix")
	{
		choice.mSoloed.insert(static_cast<unsigned>(ParseNumber(track, "track")));
	}
	auto const scale = static_cast<std::int64_t>(ParseNumber(inRequest.matches[2].str(), "scale"));
	constexpr std::int64_t kFinest = PeakStore::kSamplesPerColumn;
	if (scale < kFinest || scale % kFinest != 0 || scale > kMostSamplesPerPixel)
	{
		throw RefusedRequest{
			404, "there are peaks of " + std::to_string(kFinest) + " samples and multiples of that"};
	}
	auto const peaks = mPeaks.Get(timeline, choice, MixFile::Clock::now() + kPatience);
	auto const reduced = scale == kFinest ? *peaks : Reduce(*peaks, scale / kFinest);
	bool const isJson = inRequest.matches[3] == "json";
	AnswerTagged(inRequest, outResponse, timeline->GetTag(),
		isJson ? MakePeakJson(reduced) : MakePeakDat(reduced), isJson ? kJson : "application/octet-stream");
}

void Routes::AnswerEvents(HttpServer const& inServer, Response& outResponse)
{
	if (!mEvents.AddListener())
	{
		throw TooBusyError("too many pages listen to events");
	}
	outResponse.set_header("Cache-Control", "no-store");
	std::string const hello = "event: hello\ndata: " + Json{{"tag", mWatch.Get()->GetTag()}}.dump() + "\n\n";
	auto const next = std::make_shared<std::uint64_t>(mEvents.GetNext());
	outResponse.set_chunked_content_provider(
		"text/event-stream",
		[this, hello, next, &inServer](std::size_t inOffset, httplib::DataSink& ioSink)
		{
			std::string text = inOffset == 0 ? hello : std::string();
			auto const heartbeat = std::chrono::steady_clock::now() + kHeartbeat;
			while (text.empty() && !inServer.IsEnding() && std::chrono::steady_clock::now() < heartbeat)
			{
				text = mEvents.Wait(*next, kEventStep);
			}
			// A comment, which shows whether anybody still listens.
			text = text.empty() ? ":\n\n" : text;
			return !inServer.IsEnding() && ioSink.write(text.data(), text.size());
		},
		[this](bool) { mEvents.RemoveListener(); });
}

void Routes::AnswerComments(Response& outResponse)
{
	outResponse.set_header("Cache-Control", "no-store");
	outResponse.set_content(ToText({{"comments", mComments.List()}}), kJson);
}

void Routes::PostComments()
{
	mEvents.Post("comments", "{}");
}

void Routes::EnterComments(HttpServer& ioServer)
{
	ioServer.Enter("GET", "/comments\\.json",
		[this](Request const&, Response& outResponse) { AnswerComments(outResponse); });
	ioServer.Enter("GET", "/comments\\.otio",
		[this](Request const&, Response& outResponse)
		{
			outResponse.set_header("Cache-Control", "no-store");
			outResponse.set_header("Content-Disposition", "attachment; filename=\"comments.otio\"");
			outResponse.set_content(MakeTimelineWithMarkers(*mWatch.Get(), mComments.List()), kJson);
		});
	ioServer.Enter("POST", "/comments",
		[this](Request const& inRequest, Response& outResponse)
		{
			Json const given = ParseComment(inRequest.body);
			Json const comment = ChangeComments([&] { return mComments.Add(given); });
			outResponse.status = 201;
			outResponse.set_content(ToText(comment), kJson);
			PostComments();
		});
	ioServer.Enter("PUT", "/comments/(\\d{1,18})",
		[this](Request const& inRequest, Response& outResponse)
		{
			Json const given = ParseComment(inRequest.body);
			std::uint64_t const id = ParseNumber(inRequest.matches[1].str(), "comment");
			auto const comment = ChangeComments([&] { return mComments.Change(id, given); });
			if (!comment)
			{
				throw RefusedRequest{404, "there is no such comment"};
			}
			outResponse.set_content(ToText(*comment), kJson);
			PostComments();
		});
	ioServer.Enter("DELETE", "/comments/(\\d{1,18})",
		[this](Request const& inRequest, Response& outResponse)
		{
			if (!mComments.Remove(ParseNumber(inRequest.matches[1].str(), "comment")))
			{
				throw RefusedRequest{404, "there is no such comment"};
			}
			outResponse.status = 204;
			PostComments();
		});
}

void Routes::EnterPage(HttpServer& ioServer)
{
	for (PageFile const& file : GetPageFiles())
	{
		std::string const tag = std::to_string(std::hash<std::string_view>()(file.mBytes));
		auto const answer = [&file, tag](Request const& inRequest, Response& outResponse)
		{ AnswerTagged(inRequest, outResponse, tag, std::string(file.mBytes), FindType(file.mName)); };
		std::string pattern = "/" + file.mName;
		pattern.replace(pattern.find('.'), 1, "\\.");
		ioServer.Enter("GET", file.mName == "index.html" ? "/" : pattern, answer);
	}
}

} // namespace SonaroCommand::Serve
