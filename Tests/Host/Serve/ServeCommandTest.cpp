// "sonaro serve" as clients see it: the bytes of the mix, and clear refusals of all that is not in order.

#include "Host/ProgramRun.h"
#include "Host/TimelineJson.h"

#include <gmock/gmock.h>
#include <httplib.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <fstream>
#include <random>
#include <set>
#include <thread>

namespace SonaroHost::Testing::ServeCommandTest
{

using testing::HasSubstr;
using testing::StartsWith;

constexpr int kRate = 48000;
constexpr char kToken[] = "0123456789abcdef-_";
constexpr char kJson[] = "application/json";

// A connection that sends what it likes.
class RawClient
{
public:
	// inBuffer: how much of an answer may wait to be read; 0 for what the system chooses.
	explicit RawClient(int inPort, int inBuffer = 0)
		: mSocket(::socket(AF_INET, SOCK_STREAM, 0))
	{
		if (inBuffer > 0)
		{
			EXPECT_EQ(::setsockopt(mSocket, SOL_SOCKET, SO_RCVBUF, &inBuffer, sizeof inBuffer), 0);
		}
		sockaddr_in address{};
		address.sin_family = AF_INET;
		address.sin_port = htons(static_cast<std::uint16_t>(inPort));
		address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
		EXPECT_EQ(::connect(mSocket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
	}
	~RawClient() { ::close(mSocket); }
	RawClient(RawClient const&) = delete;
	RawClient& operator=(RawClient const&) = delete;

	void Send(std::string const& inText) const
	{
		EXPECT_EQ(
			::send(mSocket, inText.data(), inText.size(), MSG_NOSIGNAL), static_cast<ssize_t>(inText.size()));
	}
	// One byte more, if the server still takes it.
	void Trickle() const { ::send(mSocket, "x", 1, MSG_NOSIGNAL | MSG_DONTWAIT); }
	// What is there, at most so many bytes.
	std::string ReadSome(std::size_t inMost) const
	{
		std::string text(inMost, '\0');
		ssize_t const count = ::recv(mSocket, text.data(), text.size(), MSG_DONTWAIT);
		text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
		return text;
	}
	// What comes until the server closes.
	std::string ReadAll() const
	{
		std::string text;
		std::array<char, 4096> bytes{};
		for (ssize_t count = 0; (count = ::recv(mSocket, bytes.data(), bytes.size(), 0)) > 0;)
		{
			text.append(bytes.data(), static_cast<std::size_t>(count));
		}
		return text;
	}

private:
	int mSocket;
};

class ServeCommandTest : public ProgramTest
{
protected:
	void SetUp() override
	{
		WriteSound(mFolder / "a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, MakeSound(2, kRate, 3 * kRate));
		WriteTimeline(2.6);
	}

	void WriteTimeline(double inSeconds) const
	{
		Json const cut = {{"time", 0.4}, {"angle", "close"}};
		Json const cameras = WithSettings(Stack({Track("wide", {Clip("b", "a.wav", 0.0, 1.2)}),
											  Track("close", {Clip("c", "a.wav", 0.6, 1.2)})}),
			{{"multicam", {{"cuts", List({cut})}}}});
		Json const timeline =
			Timeline({Track("one", {Clip("a", "a.wav", 0.2, inSeconds)}), Track("two", {Gap(0.4), cameras})},
				{Marker("M", 0.2, 0.6)});
		WriteBytes(mFolder / "edit.otio", timeline.dump());
	}

	// Runs the server, on a port that is free, while inTalk talks to it. Returns what it prints as errors.
	std::string Serve(Words const& inOptions, std::function<void(int inPort)> const& inTalk)
	{
		std::filesystem::path const output = mFolder / ("address" + std::to_string(++mServers) + ".json");
		WriteBytes(output, "");
		mStart.mOutputFile = output.string();
		auto const meanwhile = [&](int inProcess)
		{
			Json address;
			for (int trial = 0; trial < 600 && !address.contains("port"); ++trial)
			{
				std::this_thread::sleep_for(std::chrono::milliseconds(50));
				address = Json::parse(ReadBytes(output), nullptr, false);
			}
			if (address.contains("port"))
			{
				inTalk(address["port"].get<int>());
			}
			else
			{
				ADD_FAILURE() << "no address was printed";
			}
			kill(inProcess, SIGTERM);
		};
		ProgramResult const result = Run(
			Join({"serve", "edit.otio", "--port", "0", "--json", "--cache", "cache"}, inOptions), meanwhile);
		EXPECT_EQ(result.mSignal, SIGTERM) << result.mErrors;
		return result.mErrors;
	}

	int mServers = 0;

	std::string Render(Words const& inOptions = {})
	{
		EXPECT_EQ(Run(Join({"render", "edit.otio", "-o", "mix.wav", "--quiet"}, inOptions)).mExitCode, 0);
		return ReadBytes(mFolder / "mix.wav");
	}
};

// The client waits for a server that is slow on a busy machine.
httplib::Client MakeClient(int inPort)
{
	httplib::Client client("127.0.0.1", inPort);
	client.set_read_timeout(60);
	client.set_keep_alive(true);
	return client;
}

TEST_F(ServeCommandTest, ClientsAtOnceGetTheBytesOfTheRenderedFile)
{
	std::string const whole = Render();
	auto const talk = [&](int inPort)
	{
		std::vector<std::thread> clients;
		for (unsigned number = 0; number < 8; ++number)
		{
			clients.emplace_back(
				[&, number]
				{
					httplib::Client client = MakeClient(inPort);
					std::mt19937 random(number);
					for (int trial = 0; trial < 12; ++trial)
					{
						std::size_t const first = random() % whole.size();
						std::size_t const last = std::min(first + random() % 60000, whole.size() - 1);
						std::string const range = std::to_string(first) + "-" + std::to_string(last);
						auto const part = client.Get("/mix.wav", {{"Range", "bytes=" + range}});
						ASSERT_TRUE(part);
						EXPECT_EQ(part->status, 206);
						EXPECT_EQ(part->get_header_value("Content-Range"),
							"bytes " + range + "/" + std::to_string(whole.size()));
						EXPECT_TRUE(part->body == whole.substr(first, last + 1 - first)) << range;
					}
				});
		}
		for (std::thread& client : clients)
		{
			client.join();
		}
		auto const all = MakeClient(inPort).Get("/mix.wav");
		EXPECT_TRUE(all && all->status == 200 && all->body == whole);
	};
	Serve({}, talk);
}

TEST_F(ServeCommandTest, ConditionsAndOddRangesFollowTheStandard)
{
	std::string const whole = Render({"--bits", "16"});
	auto const size = std::to_string(whole.size());
	auto const talk = [&](int inPort)
	{
		httplib::Client client = MakeClient(inPort);
		auto const head = client.Head("/mix.wav");
		ASSERT_TRUE(head);
		EXPECT_EQ(head->get_header_value("Content-Length"), size);
		EXPECT_EQ(head->get_header_value("X-Content-Type-Options"), "nosniff");
		EXPECT_THAT(head->get_header_value("Content-Security-Policy"), HasSubstr("frame-ancestors 'none'"));
		std::string const tag = head->get_header_value("ETag");
		struct Case
		{
			httplib::Headers mHeaders;
			int mStatus;
			std::size_t mBytes;
		};
		std::size_t const all = whole.size();
		for (Case const& test : {Case{{{"Range", "bytes=0-0"}}, 206, 1}, {{{"Range", "bytes=-7"}}, 206, 7},
				 {{{"Range", "bytes=10-"}}, 206, all - 10}, {{{"Range", "BYTES=0-1"}}, 200, all},
				 {{{"Range", "bytes=0-99999999999999999999999"}}, 206, all},
				 {{{"Range", "bytes=-99999999999999999999999"}}, 206, all},
				 {{{"Range", "bytes=5-1"}}, 200, all}, {{{"Range", "items=0-1"}}, 200, all},
				 {{{"Range", "bytes=0-1,5-6"}}, 200, all}, {{{"Range", "bytes=x"}}, 200, all},
				 {{{"Sonaro-Range", "bytes=0-1"}}, 200, all},
				 {{{"Range", "bytes=0-1"}, {"If-Range", tag}}, 206, 2},
				 {{{"Range", "bytes=0-1"}, {"If-Range", "\"other\""}}, 200, all},
				 {{{"If-None-Match", "\"a\", W/" + tag}}, 304, 0}, {{{"If-None-Match", "\"a\""}}, 200, all}})
		{
			auto const result = client.Get("/mix.wav", test.mHeaders);
			ASSERT_TRUE(result);
			EXPECT_EQ(result->status, test.mStatus) << testing::PrintToString(test.mHeaders);
			EXPECT_EQ(result->body.size(), test.mBytes) << testing::PrintToString(test.mHeaders);
		}
		for (char const* const range : {"bytes=99999999999999999999999-", "bytes=-0"})
		{
			auto const result = client.Get("/mix.wav", {{"Range", range}});
			ASSERT_TRUE(result);
			EXPECT_EQ(result->status, 416);
			EXPECT_EQ(result->get_header_value("Content-Range"), "bytes */" + size);
		}
	};
	Serve({"--bits", "16"}, talk);
}

TEST_F(ServeCommandTest, WhatIsNotThereOrNotValidIsRefused)
{
	auto const talk = [&](int inPort)
	{
		struct Case
		{
			char const* mPath;
			int mStatus;
			char const* mText;
		};
		for (Case const& test : {Case{"/../edit.otio", 404, "nothing of that name"},
				 {"/%2e%2e/%2e%2e/etc/passwd", 404, "nothing"}, {"//etc/passwd", 404, "nothing"},
				 {"/track/..%2f1.wav", 404, "nothing"}, {"/page.css/../edit.otio", 404, "nothing"},
				 {"/track/0.wav", 404, "there is no track 0; the timeline has 2"},
				 {"/track/3.wav", 404, "there is no track 3"}, {"/mix.wav?mute=7", 404, "no track 7"},
				 {"/mix.wav?solo=1,x", 400, "\"solo\" takes whole numbers"},
				 {"/mix.wav?mute=99999999999999999999", 400, "\"mute\""},
				 {"/mix.flac?start=99999999999", 404, "no sample"},
				 {"/mix.flac?samples=-1", 400, "\"samples\""}, {"/peaks/mix/255.dat", 404, "multiples"},
				 {"/peaks/mix/256.exe", 404, "nothing"}})
		{
			RawClient const client(inPort);
			client.Send("GET " + std::string(test.mPath) +
						" HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
			std::string const answer = client.ReadAll();
			EXPECT_THAT(answer, StartsWith("HTTP/1.1 " + std::to_string(test.mStatus))) << test.mPath;
			std::string body = answer.substr(answer.find("\r\n\r\n") + 4);
			std::string const error = Json::parse(body, nullptr, false).value("error", "");
			EXPECT_THAT(error, HasSubstr(test.mText)) << test.mPath;
		}
		struct Raw
		{
			std::string mRequest;
			char const* mStart;
		};
		std::string const large(40000, 'x');
		// More than the buffers of sockets hold: what is not read must not take the answer away.
		std::string const huge(10 << 20, 'x');
		std::string const start =
			"POST /comments HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n";
		for (Raw const& test :
			{Raw{"GET /" + large + " HTTP/1.1\r\n\r\n", "HTTP/1.1 431"},
				{"GET / HTTP/1.1\r\nHost: localhost\r\nA: " + large + "\r\n\r\n", "HTTP/1.1 431"},
				{"nonsense\r\n\r\n", "HTTP/1.1 400"},
				{"GET / HTTP/1.1\r\nConnection: close\r\nHost: evil.example\r\n\r\n", "HTTP/1.1 421"},
				{"GET / HTTP/1.1\r\nConnection: close\r\n\r\n", "HTTP/1.1 421"},
				{"PATCH / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 3\r\n\r\nabc", "HTTP/1.1 405"},
				{"POST /comments HTTP/1.1\r\nHost: localhost\r\nContent-Type: text/plain\r\nContent-Length: 2"
				 "\r\n\r\n{}",
					"HTTP/1.1 415"},
				{"POST /comments HTTP/1.1\r\nHost: localhost\r\nOrigin: http://evil.example\r\nContent-Type: "
				 "application/json\r\nContent-Length: 2\r\n\r\n{}",
					"HTTP/1.1 403"},
				{start + "Content-Length: 10485760\r\n\r\n" + huge, "HTTP/1.1 413"},
				{start + "Transfer-Encoding: chunked\r\n\r\nA00000\r\n" + huge + "\r\n0\r\n\r\n",
					"HTTP/1.1 411"},
				{start + "Content-Encoding: gzip\r\nContent-Length: 2\r\n\r\n{}", "HTTP/1.1 415"}})
		{
			RawClient const client(inPort);
			client.Send(test.mRequest);
			std::string const answer = client.ReadAll();
			EXPECT_THAT(answer, StartsWith(test.mStart)) << test.mRequest.substr(0, 80);
			Json const error = Json::parse(answer.substr(answer.find("\r\n\r\n") + 4), nullptr, false);
			EXPECT_TRUE(error.contains("error")) << answer;
		}
		ExpectRefusal({"serve", "edit.otio", "--port", std::to_string(inPort)}, 1,
			{"cannot listen on port " + std::to_string(inPort), "it is in use"});
	};
	Serve({}, talk);
	ExpectRefusals({{2, {"serve", "edit.otio", "--bind", "0.0.0.0"}, {"lets other machines in; add --token"}},
		{2, {"serve", "edit.otio", "--token", "short"}, {"16 characters or more"}},
		{2, {"serve", "edit.otio", "--token", ""}, {"--token: the value is empty"}},
		{2, {"serve", "a.wav"}, {"'a.wav' is no timeline"}},
		{1, {"serve", "gone.otio", "--port", "0"}, {"'gone.otio'"}}});
}

TEST_F(ServeCommandTest, AMethodThatAPathDoesNotTakeIsRefusedWithThoseThatItTakes)
{
	auto const talk = [&](int inPort)
	{
		struct Case
		{
			char const* mMethod;
			char const* mPath;
			int mStatus;
			char const* mAllow;
		};
		for (Case const& test :
			{Case{"POST", "/mix.wav", 405, "GET, HEAD"}, {"DELETE", "/track/1.wav", 405, "GET, HEAD"},
				{"PUT", "/", 405, "GET, HEAD"}, {"OPTIONS", "/events", 405, "GET, HEAD"},
				{"POST", "/comments.json", 405, "GET, HEAD"}, {"GET", "/comments", 405, "POST"},
				{"HEAD", "/comments", 405, "POST"}, {"PATCH", "/comments", 405, "POST"},
				{"POST", "/comments/1", 405, "PUT, DELETE"}, {"GET", "/comments/1", 405, "PUT, DELETE"},
				{"POST", "/nowhere", 404, ""}, {"PATCH", "/nowhere", 404, ""}, {"POST", "/comments", 415, ""},
				{"HEAD", "/mix.wav", 200, ""}})
		{
			httplib::Request request;
			request.method = test.mMethod;
			request.path = test.mPath;
			auto const answer = MakeClient(inPort).send(request);
			ASSERT_TRUE(answer);
			EXPECT_EQ(answer->status, test.mStatus) << test.mMethod << " " << test.mPath;
			EXPECT_EQ(answer->get_header_value("Allow"), test.mAllow) << test.mMethod << " " << test.mPath;
		}
	};
	Serve({}, talk);
}

TEST_F(ServeCommandTest, ATokenIsAskedForAndBecomesACookie)
{
	auto const talk = [&](int inPort)
	{
		httplib::Client client = MakeClient(inPort);
		auto const expect = [&](std::string const& inPath, httplib::Headers const& inHeaders, int inStatus)
		{
			auto const result = client.Get(inPath, inHeaders);
			ASSERT_TRUE(result);
			EXPECT_EQ(result->status, inStatus) << inPath << " " << testing::PrintToString(inHeaders);
		};
		std::string const token = kToken;
		expect("/timeline.json", {}, 401);
		expect("/mix.wav", {{"Range", "bytes=0-1"}}, 401);
		expect("/timeline.json?token=" + token.substr(1), {}, 401);
		expect("/timeline.json?token=" + token + "x", {}, 401);
		expect("/timeline.json", {{"Authorization", "Bearer " + token.substr(0, 17)}}, 401);
		expect("/timeline.json", {{"Authorization", token}}, 401);
		expect("/timeline.json", {{"Authorization", "Bearer " + token}, {"Host", "any.example"}}, 200);
		expect("/timeline.json", {{"Authorization", "bEARER  " + token}}, 200);
		auto const page = client.Get("/?token=" + token);
		ASSERT_TRUE(page);
		EXPECT_EQ(page->status, 303);
		EXPECT_EQ(page->get_header_value("Location"), "/");
		std::string const cookie = page->get_header_value("Set-Cookie");
		EXPECT_THAT(cookie, HasSubstr("; HttpOnly; SameSite=Strict"));
		expect("/", {{"Cookie", "other=1; " + cookie.substr(0, cookie.find(';'))}}, 200);
	};
	Serve({"--token", kToken}, talk);
}

TEST_F(ServeCommandTest, CommentsAreKeptAndNeverLost)
{
	std::filesystem::path const path = mFolder / "edit.otio.comments.json";
	auto const talk = [&](int inPort)
	{
		httplib::Client client = MakeClient(inPort);
		auto const post = [&](std::string const& inBody)
		{ return client.Post("/comments", inBody, kJson)->status; };
		EXPECT_EQ(post(R"({"sample": 4800, "text": "second"})"), 201);
		EXPECT_EQ(post(R"({"sample": 100, "text": "first"})"), 201);
		for (char const* const body :
			{R"({"sample": -1, "text": "a"})", R"({"sample": 1.5, "text": "a"})", R"({"sample": 1})",
				R"({"sample": 1, "text": ""})", R"({"sample": 1, "text": " \n"})", R"([])"})
		{
			EXPECT_EQ(post(body), 422) << body;
		}
		EXPECT_EQ(post("{\"sample\": 1"), 400);
		EXPECT_EQ(client.Put("/comments/1", R"({"text": "changed"})", kJson)->status, 200);
		EXPECT_EQ(client.Put("/comments/9", R"({"text": "changed"})", kJson)->status, 404);
		Json const list = Json::parse(client.Get("/comments.json")->body)["comments"];
		EXPECT_EQ(
			list.dump(), R"([{"id":2,"sample":100,"text":"first"},{"id":1,"sample":4800,"text":"changed"}])");
		Json const timeline = Json::parse(client.Get("/comments.otio")->body);
		Json const& marker = timeline["tracks"]["markers"].back();
		EXPECT_EQ(marker["name"], "changed");
		EXPECT_EQ(marker["marked_range"]["start_time"]["value"], 4800.0);
		EXPECT_EQ(client.Delete("/comments/2", "{}", kJson)->status, 204);
		// Through a proxy that adds TLS.
		EXPECT_EQ(client
					  .Post("/comments", {{"Origin", "https://127.0.0.1:" + std::to_string(inPort)}},
						  R"({"sample": 7, "text": "proxy"})", kJson)
					  ->status,
			201);

		// What another program wrote stays, also where it is more than this one knows.
		Json file = Json::parse(ReadBytes(path));
		file["comments"][0]["author"] = "somebody";
		WriteBytes(path, file.dump());
		EXPECT_EQ(post(R"({"sample": 7, "text": "third"})"), 201);
		EXPECT_EQ(Json::parse(ReadBytes(path))["comments"][0]["author"], "somebody");
		// A file that is broken is left alone.
		WriteBytes(path, "{\"comments\": [");
		EXPECT_EQ(post(R"({"sample": 8, "text": "fourth"})"), 500);
		EXPECT_THAT(client.Get("/comments.json")->body, HasSubstr("move it away"));
		EXPECT_EQ(ReadBytes(path), "{\"comments\": [");
	};
	Serve({}, talk);
	EXPECT_THAT(mFolder.List(), testing::Not(testing::Contains(testing::EndsWith(".tmp"))));
}

TEST_F(ServeCommandTest, AFullDiskLosesNoComment)
{
	std::filesystem::path const path = mFolder / "edit.otio.comments.json";
	mStart.mFileSizeLimit = 10000;
	auto const talk = [&](int inPort)
	{
		httplib::Client client = MakeClient(inPort);
		Json const comment = {{"sample", 1}, {"text", std::string(3000, 'x')}};
		auto const post = [&] { return client.Post("/comments", comment.dump(), kJson); };
		for (int i = 0; i < 3; ++i)
		{
			EXPECT_EQ(post()->status, 201);
		}
		std::string const former = ReadBytes(path);
		auto const refused = post();
		EXPECT_EQ(refused->status, 500);
		EXPECT_THAT(refused->body, HasSubstr("edit.otio.comments.json"));
		EXPECT_EQ(ReadBytes(path), former);
		EXPECT_EQ(client.Delete("/comments/1", "{}", kJson)->status, 204);
		EXPECT_EQ(post()->status, 201);
	};
	Serve({}, talk);
	EXPECT_THAT(mFolder.List(), testing::Not(testing::Contains(testing::EndsWith(".tmp"))));
}

TEST_F(ServeCommandTest, ACacheThatCannotBeWrittenIsReportedAndDoneWithout)
{
	auto const talk = [](int inPort)
	{
		auto const peaks = MakeClient(inPort).Get("/peaks/mix/256.dat");
		EXPECT_TRUE(peaks && peaks->status == 200);
	};
	EXPECT_EQ(Serve({}, talk), "");
	std::filesystem::remove_all(mFolder / "cache");
	WriteBytes(mFolder / "cache", "a file");
	EXPECT_THAT(
		Serve({}, talk), testing::AllOf(HasSubstr("not kept in 'cache': "), HasSubstr("with --cache")));
	// As if the disk was full.
	std::filesystem::remove(mFolder / "cache");
	mStart.mFileSizeLimit = 2000;
	EXPECT_THAT(
		Serve({}, talk), testing::AllOf(HasSubstr("not kept in 'cache': "), HasSubstr("make room there")));
	EXPECT_TRUE(std::filesystem::is_empty(mFolder / "cache"));
}

TEST_F(ServeCommandTest, ChangesAreTakenOverAndBrokenOnesAreNot)
{
	auto const talk = [&](int inPort)
	{
		httplib::Client client = MakeClient(inPort);
		std::string events;
		std::atomic<bool> isOver = false;
		std::thread listener(
			[&]
			{
				MakeClient(inPort).Get("/events",
					[&](char const* inBytes, std::size_t inCount)
					{
						events.append(inBytes, inCount);
						return !isOver;
					});
			});
		std::string const former = client.Get("/mix.wav")->body;
		std::string const timeline = ReadBytes(mFolder / "edit.otio");
		auto const describe = [&] { return Json::parse(client.Get("/timeline.json")->body); };
		auto const wait = [&](std::function<bool()> const& inIsDone)
		{
			for (int trial = 0; trial < 600 && !inIsDone(); ++trial)
			{
				std::this_thread::sleep_for(std::chrono::milliseconds(50));
			}
			EXPECT_TRUE(inIsDone());
		};
		WriteBytes(mFolder / "edit.otio", timeline.substr(0, timeline.size() / 2));
		wait([&] { return describe()["problem"].is_string(); });
		EXPECT_TRUE(client.Get("/mix.wav")->body == former);
		WriteBytes(mFolder / "edit.otio", timeline);
		wait([&] { return describe()["problem"].is_null(); });
		std::filesystem::rename(mFolder / "edit.otio", mFolder / "away.otio");
		wait([&] { return describe()["problem"].is_string(); });
		EXPECT_TRUE(client.Get("/mix.wav")->body == former);
		std::filesystem::rename(mFolder / "away.otio", mFolder / "edit.otio");
		wait([&] { return describe()["problem"].is_null(); });
		WriteTimeline(2.0);
		wait([&] { return describe()["problem"].is_null() && describe()["programme"]["seconds"] == 2.0; });
		EXPECT_LT(client.Get("/mix.wav")->body.size(), former.size());
		isOver = true;
		listener.join();
		EXPECT_THAT(events, testing::AllOf(StartsWith("event: hello"), HasSubstr("event: problem")));
	};
	Serve({}, talk);
}

TEST_F(ServeCommandTest, SlowClientsHoldNobodyUp)
{
	std::string const whole = Render();
	auto const talk = [&](int inPort)
	{
		// Some ask for all and take nothing, some never finish to ask.
		std::vector<std::unique_ptr<RawClient>> slow;
		for (int i = 0; i < 20; ++i)
		{
			slow.push_back(std::make_unique<RawClient>(inPort));
			slow.back()->Send(i % 2 == 0 ? "GET /mix.wav HTTP/1.1\r\nHost: localhost\r\n\r\n" : "GET /mix");
		}
		auto const all = MakeClient(inPort).Get("/mix.wav");
		EXPECT_TRUE(all && all->body == whole);
	};
	Serve({"--jobs", "1"}, talk);
}

// As many as are served at once write and read a byte now and then; they are dropped for those who wait.
TEST_F(ServeCommandTest, TooManySlowClientsGiveWayToOthers)
{
	constexpr int kMostConnections = 64;
	constexpr int kSmallBuffer = 4096;
	std::string const whole = Render();
	auto const talk = [&](int inPort)
	{
		std::vector<std::unique_ptr<RawClient>> asking;
		std::vector<std::unique_ptr<RawClient>> reading;
		for (int i = 0; i < kMostConnections / 2; ++i)
		{
			asking.push_back(std::make_unique<RawClient>(inPort));
			asking.back()->Send("GET /mix");
			reading.push_back(std::make_unique<RawClient>(inPort, kSmallBuffer));
			reading.back()->Send("GET /mix.wav HTTP/1.1\r\nHost: localhost\r\n\r\n");
		}
		std::atomic<bool> isOver = false;
		std::thread slow(
			[&]
			{
				for (; !isOver; std::this_thread::sleep_for(std::chrono::milliseconds(100)))
				{
					std::ranges::for_each(asking, [](auto const& inClient) { inClient->Trickle(); });
					std::ranges::for_each(reading, [](auto const& inClient) { inClient->ReadSome(1); });
				}
			});
		std::vector<std::thread> others;
		for (int i = 0; i < 20; ++i)
		{
			others.emplace_back(
				[&]
				{
					auto const all = MakeClient(inPort).Get("/mix.wav");
					EXPECT_TRUE(all && all->body == whole);
				});
		}
		std::ranges::for_each(others, &std::thread::join);
		isOver = true;
		slow.join();
		auto const isDropped = [](auto const& inClient)
		{ return inClient->ReadSome(100).starts_with("HTTP/1.1 408"); };
		EXPECT_GT(std::ranges::count_if(asking, isDropped), 0);
	};
	Serve({}, talk);
}

TEST_F(ServeCommandTest, TwoServersOfOneTimelineLoseNoComment)
{
	constexpr int kThreads = 4;
	constexpr int kComments = 15;
	auto const list = [](int inPort)
	{ return Json::parse(MakeClient(inPort).Get("/comments.json")->body)["comments"]; };
	auto const talk = [&](int inFirst, int inSecond)
	{
		std::vector<std::thread> writers;
		for (int thread = 0; thread < kThreads; ++thread)
		{
			writers.emplace_back(
				[&, thread]
				{
					httplib::Client client = MakeClient(thread % 2 == 0 ? inFirst : inSecond);
					for (int i = 0; i < kComments; ++i)
					{
						Json const comment = {{"sample", i}, {"text", std::to_string(thread)}};
						auto const answer = client.Post("/comments", comment.dump(), kJson);
						EXPECT_TRUE(answer && answer->status == 201);
					}
				});
		}
		std::ranges::for_each(writers, &std::thread::join);
		Json const comments = list(inFirst);
		EXPECT_EQ(comments, list(inSecond));
		std::set<std::uint64_t> ids;
		for (Json const& comment : comments)
		{
			ids.insert(comment["id"].get<std::uint64_t>());
		}
		EXPECT_EQ(ids.size(), std::size_t{kThreads * kComments});
	};
	Serve({}, [&](int inFirst) { Serve({}, [&](int inSecond) { talk(inFirst, inSecond); }); });
}

TEST_F(ServeCommandTest, WhatAnEffectHeardElsewhereIsForgotten)
{
	Json const echo = {{"OTIO_SCHEMA", "Effect.1"}, {"effect_name", "LV2"},
		{"metadata", {{"sonaro", {{"lv2", {{"uri", "http://drobilla.net/plugins/mda/Delay"}}}}}}}};
	Json const track = With(Track("one", {Clip("a", "a.wav", 0.2, 2.6)}), {{"effects", List({echo})}});
	WriteBytes(mFolder / "edit.otio", Timeline({track}).dump());
	if (Run({"render", "edit.otio", "-o", "mix.wav", "--quiet"}).mExitCode != 0)
	{
		GTEST_SKIP() << "mda-lv2 is not installed";
	}
	std::string const whole = ReadBytes(mFolder / "mix.wav");
	auto const talk = [&](int inPort)
	{
		httplib::Client client = MakeClient(inPort);
		for (std::size_t const first : {900000u, 100000u, 500000u, 20000u})
		{
			std::string const range = std::to_string(first) + "-" + std::to_string(first + 49999);
			auto const part = client.Get("/mix.wav", {{"Range", "bytes=" + range}});
			ASSERT_TRUE(part);
			EXPECT_TRUE(part->body == whole.substr(first, 50000)) << range;
			EXPECT_EQ(part->get_header_value("Sonaro-Warm-Up-Seconds"), "60.000000");
		}
	};
	// The warm-up reaches the start.
	Serve({"--jobs", "1", "--warm-up", "60"}, talk);
}

TEST_F(ServeCommandTest, FactsAreThoseOfTheTimeline)
{
	auto const talk = [&](int inPort)
	{
		httplib::Client client = MakeClient(inPort);
		auto const get = [&](char const* inPath)
		{
			auto result = client.Get(inPath);
			for (int trial = 0; trial < 20 && result && result->status == 503; ++trial)
			{
				result = client.Get(inPath);
			}
			EXPECT_TRUE(result && result->status == 200) << inPath;
			return result ? result->body : std::string();
		};
		Json const timeline = Json::parse(get("/timeline.json"));
		EXPECT_EQ(timeline["tracks"][1]["number"], 2);
		EXPECT_EQ(timeline["markers"][0]["firstSample"], 9600);
		EXPECT_EQ(timeline["angles"][1]["name"], "close");
		EXPECT_EQ(timeline["angles"][1]["firstSample"], 38400);
		EXPECT_EQ(timeline["wave"]["isExactAnywhere"], true);
		// Compressed by gzip alone, since Brotli would take seconds.
		auto const packed = client.Get("/timeline.json", {{"Accept-Encoding", "br, gzip"}});
		ASSERT_TRUE(packed);
		EXPECT_EQ(packed->get_header_value("Content-Encoding"), "gzip");
		Json const report = Json::parse(get("/report.json"));
		Json const loudness = Json::parse(get("/loudness.json"));
		EXPECT_NEAR(
			report["mix"]["integratedLufs"].get<double>(), loudness["integratedLufs"].get<double>(), 0.01);
		EXPECT_EQ(loudness["shortTerm"].size(), 26u);
		Json const peaks = Json::parse(get("/peaks/2/1024.json"));
		EXPECT_EQ(peaks["samples_per_pixel"], 1024);
		EXPECT_EQ(peaks["data"].size(), peaks["length"].get<std::size_t>() * 4);
		WriteBytes(mFolder / "part.flac", get("/mix.flac?start=1000&samples=5000&mute=1"));
		EXPECT_EQ(ReadIntegers(mFolder / "part.flac").size(), 10000u);
		EXPECT_THAT(get("/"), HasSubstr("<script type=\"module\" src=\"main.js\">"));
		EXPECT_THAT(get("/player.js"), HasSubstr("export class Player"));
	};
	Serve({}, talk);
}

TEST_F(ServeCommandTest, TwoEarsGetTheBytesOfTheRenderedFile)
{
	std::string const whole = Render({"--binaural", "--yaw", "30", "--bits", "24"});
	auto const talk = [&](int inPort)
	{
		auto const all = MakeClient(inPort).Get("/mix.wav");
		EXPECT_TRUE(all && all->body == whole);
		auto const part = MakeClient(inPort).Get("/mix.wav", {{"Range", "bytes=200000-200999"}});
		EXPECT_TRUE(part && part->body == whole.substr(200000, 1000));
	};
	Serve({"--binaural", "--yaw", "30", "--bits", "24"}, talk);
}

} // namespace SonaroHost::Testing::ServeCommandTest
