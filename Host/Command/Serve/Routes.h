#pragma once

#include "Analysis.h"
#include "CommentFile.h"
#include "EventHub.h"
#include "Http/Access.h"
#include "Http/HttpServer.h"
#include "ServeSettings.h"
#include "SonaroHost/Serve/PeakStore.h"
#include "TimelineWatch.h"

#include <memory>

namespace SonaroCommand::Serve
{

// What there is to ask for, and who answers it. Docs/serve.md describes it.
// Threads: the server calls from any.
class Routes
{
public:
	// Opens the timeline. Throws a HostError.
	explicit Routes(ServeSettings const& inSettings);

	// Why waveforms cannot be kept on the disk; empty where they can.
	std::string FindCacheObstacle() const { return mPeaks.FindObstacle(); }

	// As it is now.
	std::shared_ptr<SonaroHost::Serve::ServedTimeline> GetTimeline() const { return mWatch.Get(); }

	// Enters all into the server, which does not outlive this.
	void Enter(HttpServer& ioServer, Access const& inAccess);

private:
	using Request = httplib::Request;
	using Response = httplib::Response;

	void EnterSound(HttpServer& ioServer);
	void EnterFacts(HttpServer& ioServer);
	void EnterComments(HttpServer& ioServer);
	void EnterPage(HttpServer& ioServer);

	void AnswerFlac(Request const& inRequest, Response& outResponse);
	void AnswerTrack(Request const& inRequest, Response& outResponse);
	void AnswerPeaks(Request const& inRequest, Response& outResponse);
	void AnswerTimeline(Request const& inRequest, Response& outResponse);
	void AnswerEvents(HttpServer const& inServer, Response& outResponse);
	void AnswerComments(Response& outResponse);
	void PostComments();

	EventHub mEvents;
	TimelineWatch mWatch;
	CommentFile mComments;
	SonaroHost::Serve::PeakStore mPeaks;
	Analysis mAnalysis;
};

} // namespace SonaroCommand::Serve
