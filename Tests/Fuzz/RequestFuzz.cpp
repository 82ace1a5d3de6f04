#include "Fuzzing.h"
#include "Serve/Http/Access.h"
#include "Serve/Http/HttpServer.h"
#include "Serve/Routes.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Render/AudioFileWriter.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cctype>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <thread>
#include <utility>

using namespace SonaroFuzzing;
using namespace SonaroCommand::Serve;

namespace
{

constexpr int kPort = 8750;
constexpr int kRate = 8000;
constexpr unsigned kFrames = 4000;
// What the socket takes without a reader.
constexpr std::size_t kMostBytes = 65536;

constexpr char const* kTimeline = R"({"OTIO_SCHEMA": "Timeline.1", "name": "edit", "tracks": {
	"OTIO_SCHEMA": "Stack.1", "children": [{"OTIO_SCHEMA": "Track.1", "kind": "Audio", "children": [
	{"OTIO_SCHEMA": "Clip.1", "name": "tone", "source_range": {"OTIO_SCHEMA": "TimeRange.1",
	"start_time": {"OTIO_SCHEMA": "RationalTime.1", "value": 0, "rate": 8000},
	"duration": {"OTIO_SCHEMA": "RationalTime.1", "value": 4000, "rate": 8000}},
	"media_reference": {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "tone.wav"}}]}]}})";

void WriteTone()
{
	SonaroHost::AudioFileWriter writer(
		GetFolder() / "tone.wav", {}, kRate, SonaroHost::MakeLayoutOfChannels(1), kFrames);
	dsp::AudioBuffer block(1, kFrames);
	for (unsigned i = 0; i < kFrames; ++i)
	{
		block.GetChannel(0)[i] = static_cast<float>(i % 100) / 200.0f;
	}
	block.NoteBufferWrite(0, kFrames);
	writer.Write(block);
	writer.Finish();
}

ServeSettings MakeSettings()
{
	WriteTone();
	ServeSettings settings;
	settings.mRequest.mInput = WriteInput("edit.otio", kTimeline);
	settings.mCacheFolder = GetFolder() / "cache";
	return settings;
}

// The parsers and the handlers of the server, without its listening.
struct Served
{
	Served() { mRoutes.Enter(mServer, Access("", kPort)); }

	HttpServer mServer;
	Routes mRoutes{MakeSettings()};
};

// Events go on until the listener leaves, which takes the server seconds to see.
bool AsksForEvents(std::string_view inRequest)
{
	std::string path;
	for (std::size_t i = 0; i < inRequest.size(); ++i)
	{
		if (inRequest[i] != '%')
		{
			path += inRequest[i];
			continue;
		}
		std::string const digits(inRequest.substr(i + 1, 2));
		path += static_cast<char>(std::strtol(digits.c_str(), nullptr, 16));
		i += digits.size();
	}
	return path.find("events") != std::string::npos;
}

std::string ReadAll(int inSocket)
{
	std::string answer;
	static std::array<char, 65536> sBytes{};
	for (ssize_t count = 1; count > 0;)
	{
		count = ::read(inSocket, sBytes.data(), sBytes.size());
		answer.append(sBytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
	}
	return answer;
}

// Reads answers on a thread of its own, one for all of them: making one takes longer than an answer.
class AnswerReader
{
public:
	AnswerReader()
	{
		std::thread([this] { Work(); }).detach();
	}

	void Begin(int inSocket)
	{
		mSocket = inSocket;
		mSocket.notify_all();
	}

	std::string Take()
	{
		for (int socket = mSocket; socket != kNone; socket = mSocket)
		{
			mSocket.wait(socket);
		}
		return std::move(mAnswer);
	}

private:
	static constexpr int kNone = -1;

	void Work()
	{
		while (true)
		{
			mSocket.wait(kNone);
			mAnswer = ReadAll(mSocket);
			mSocket = kNone;
			mSocket.notify_all();
		}
	}

	std::atomic<int> mSocket{kNone};
	std::string mAnswer;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize)
{
	static auto const sServed = []
	{
		std::signal(SIGPIPE, SIG_IGN);
		return std::make_unique<Served>();
	}();
	// Its thread lasts as long as the process.
	static auto* const sReader = new AnswerReader;
	std::string_view const request = AsText(inData, inSize);
	if (inSize > kMostBytes || AsksForEvents(request))
	{
		return -1;
	}
	// A list of comments that grows makes each one slower.
	static unsigned sTrial = 0;
	if (++sTrial % 64 == 0)
	{
		std::filesystem::remove(GetFolder() / "edit.otio.comments.json");
	}
	std::array<int, 2> ends{};
	Require(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0);
	Require(::send(ends[0], request.data(), request.size(), 0) == static_cast<ssize_t>(request.size()));
	::shutdown(ends[0], SHUT_WR);
	sReader->Begin(ends[0]);
	sServed->mServer.ServeConnection(ends[1]);
	std::string const answer = sReader->Take();
	::close(ends[0]);
	// Whatever comes is answered, and nothing of it is taken for a fault of the server.
	Require(answer.empty() || answer.starts_with("HTTP/1.1 "));
	Require(!answer.starts_with("HTTP/1.1 500"));
	return 0;
}
