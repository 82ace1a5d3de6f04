#include "HttpServer.h"

#include "Connection.h"
#include "SonaroHost/Base/HostError.h"

#include <sys/socket.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace SonaroCommand::Serve
{

namespace
{

constexpr std::size_t kMostConnections = 64;
constexpr std::size_t kMostWaiting = 128;
constexpr int kBacklog = 128;
constexpr int kMostRequestsPerConnection = 1000;

// A thread for each connection up to a limit. Beyond it connections wait, and beyond another the server accepts none.
class ConnectionQueue final : public httplib::TaskQueue
{
public:
	// Keeps in ioState whether connections wait.
	explicit ConnectionQueue(ServerState& ioState)
		: mState(ioState)
	{
	}

	void enqueue(std::function<void()> inTask) override
	{
		std::unique_lock lock(mMutex);
		mChanged.wait(lock, [this] { return mTasks.size() < kMostWaiting || mIsEnding; });
		mTasks.push_back(std::move(inTask));
		if (mTasks.size() > mIdle && mThreads.size() < kMostConnections)
		{
			mThreads.emplace_back([this] { Work(); });
		}
		SeeWhoWaits();
		mChanged.notify_all();
	}

	void shutdown() override
	{
		{
			std::lock_guard const lock(mMutex);
			mIsEnding = true;
			mChanged.notify_all();
		}
		for (std::thread& thread : mThreads)
		{
			thread.join();
		}
	}

private:
	// Called with the lock.
	void SeeWhoWaits() { mState.mIsCrowded = mThreads.size() == kMostConnections && mTasks.size() > mIdle; }

	void Work()
	{
		std::unique_lock lock(mMutex);
		while (true)
		{
			++mIdle;
			mChanged.wait(lock, [this] { return !mTasks.empty() || mIsEnding; });
			--mIdle;
			if (mTasks.empty())
			{
				return;
			}
			std::function<void()> const task = std::move(mTasks.front());
			mTasks.pop_front();
			SeeWhoWaits();
			mChanged.notify_all();
			lock.unlock();
			task();
			lock.lock();
		}
	}

	ServerState& mState;
	std::mutex mMutex;
	std::condition_variable mChanged;
	std::deque<std::function<void()>> mTasks;
	std::vector<std::thread> mThreads;
	std::size_t mIdle = 0;
	bool mIsEnding = false;
};

// Leaves gzip alone of what the client accepts: the library's Brotli takes seconds for a megabyte.
void LimitEncodings(httplib::Request& ioRequest)
{
	bool const takesGzip = ioRequest.get_header_value("Accept-Encoding").find("gzip") != std::string::npos;
	ioRequest.headers.erase("Accept-Encoding");
	if (takesGzip)
	{
		ioRequest.headers.emplace("Accept-Encoding", "gzip");
	}
}

} // namespace

HttpServer::HttpServer()
{
	new_task_queue = [this] { return new ConnectionQueue(mState); };
	set_payload_max_length(Connection::kMostBodyBytes);
	set_keep_alive_max_count(kMostRequestsPerConnection);
	set_tcp_nodelay(true);
	// The library's own would let another process listen on the same port.
	set_socket_options(
		[](socket_t inSocket)
		{
			int const isOn = 1;
			::setsockopt(inSocket, SOL_SOCKET, SO_REUSEADDR, &isOn, sizeof isOn);
		});
}

void HttpServer::Enter(std::string const& inMethod, std::string const& inPattern, Handler inHandler)
{
	mRoutes.push_back({inMethod, std::regex(inPattern)});
	inMethod == "POST"     ? Post(inPattern, std::move(inHandler))
	: inMethod == "PUT"    ? Put(inPattern, std::move(inHandler))
	: inMethod == "DELETE" ? Delete(inPattern, std::move(inHandler))
						   : Get(inPattern, std::move(inHandler));
}

std::string HttpServer::ListMethods(std::string const& inPath) const
{
	std::string methods;
	for (Route const& route : mRoutes)
	{
		if (std::regex_match(inPath, route.mPattern))
		{
			methods += (methods.empty() ? "" : ", ") + route.mMethod;
			methods += route.mMethod == "GET" ? ", HEAD" : "";
		}
	}
	return methods;
}

int HttpServer::Bind(std::string const& inHost, int inPort)
{
	int const port = inPort == 0 ? bind_to_any_port(inHost) : bind_to_port(inHost, inPort) ? inPort : -1;
	if (port <= 0)
	{
		SonaroHost::RefuseOutput(
			"cannot listen on port " + std::to_string(inPort) + " of '" + inHost +
			"': it is in use, or this machine does not have that address; choose another "
			"--port or --bind");
	}
	// More clients may knock at once than the library expects.
	::listen(svr_sock_, kBacklog);
	return port;
}

void HttpServer::Serve()
{
	listen_after_bind();
}

void HttpServer::Stop()
{
	mState.mIsEnding = true;
	stop();
}

void HttpServer::ServeConnection(socket_t inSocket)
{
	Connection connection(inSocket, mState);
	for (int left = kMostRequestsPerConnection; left > 0 && connection.ReadHead(); --left)
	{
		bool isClosed = false;
		auto const setUp = [&](httplib::Request& ioRequest)
		{
			ioRequest.headers.erase(kRangeHeader);
			ioRequest.headers.emplace(kRangeHeader, connection.GetRange());
			LimitEncodings(ioRequest);
		};
		// A request with content is the last, so that none of it is taken for another request.
		bool const isLast = left == 1 || connection.HasContent();
		bool const isAnswered = process_request(connection, isLast, isClosed, setUp);
		if (!isAnswered || isClosed || isLast || !connection.IsHeadRead())
		{
			break;
		}
	}
}

} // namespace SonaroCommand::Serve
