#include "Connection.h"

#include "Report/Json.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <strings.h>
#include <utility>

namespace SonaroCommand::Serve
{

namespace
{

constexpr std::size_t kMostHeadBytes = 16384;
// Between two requests, for the whole of one, and for a reader to take anything.
constexpr auto kIdleTime = std::chrono::seconds(5);
constexpr auto kRequestTime = std::chrono::seconds(10);
constexpr auto kStallTime = std::chrono::seconds(20);
// The same for clients for which others wait.
constexpr auto kCrowdedRequestTime = std::chrono::seconds(1);
constexpr auto kCrowdedStallTime = std::chrono::seconds(4);
constexpr auto kCrowdedRestTime = std::chrono::milliseconds(200);
// How long and how much is read of a request that is refused. A socket that is closed with unread bytes takes its answer
// away from the client.
constexpr auto kRestTime = std::chrono::seconds(2);
constexpr std::size_t kMostRestBytes = std::size_t{16} << 20;
// How often a wait looks whether the server ends.
constexpr auto kWaitStep = std::chrono::milliseconds(200);

std::size_t FindHeadEnd(std::string const& inText)
{
	constexpr std::size_t kEndBytes = 4;
	std::size_t const end = inText.find("\r\n\r\n");
	return end == std::string::npos ? end : end + kEndBytes;
}

// The value of the field of a line, whose name ends in a colon; nothing for a line of another name.
std::optional<std::string> FindField(std::string const& inLine, std::string const& inName)
{
	bool const isIt = strncasecmp(inLine.c_str(), inName.c_str(), inName.size()) == 0;
	return isIt ? std::optional(inLine.substr(inName.size())) : std::nullopt;
}

void FormatAddress(sockaddr_storage const& inAddress, std::string& outAddress, int& outPort)
{
	std::array<char, INET6_ADDRSTRLEN> text{};
	if (inAddress.ss_family == AF_INET)
	{
		sockaddr_in address{};
		std::memcpy(&address, &inAddress, sizeof address);
		inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size());
		outPort = ntohs(address.sin_port);
	}
	else if (inAddress.ss_family == AF_INET6)
	{
		sockaddr_in6 address{};
		std::memcpy(&address, &inAddress, sizeof address);
		inet_ntop(AF_INET6, &address.sin6_addr, text.data(), text.size());
		outPort = ntohs(address.sin6_port);
	}
	outAddress = text.data();
}

} // namespace

Connection::Connection(socket_t inSocket, ServerState const& inState)
	: mSocket(inSocket),
	  mState(inState)
{
}

Connection::~Connection()
{
	if (mIsRefused || mHasContent)
	{
		ReadRest();
	}
	::shutdown(mSocket, SHUT_RDWR);
	::close(mSocket);
}

bool Connection::ReadHead()
{
	mReceived.erase(0, std::exchange(mRead, 0));
	mBegin = Clock::now();
	mDeadline = mBegin + kIdleTime;
	bool hasBegun = !mReceived.empty();
	std::size_t end = FindHeadEnd(mReceived);
	while (end == std::string::npos && mReceived.size() <= kMostHeadBytes)
	{
		std::array<char, 4096> bytes{};
		ssize_t const count = Receive(bytes.data(), bytes.size(), GetRequestPatience());
		if (count <= 0)
		{
			if (hasBegun && count < 0 && !mState.mIsEnding)
			{
				Refuse("408 Request Timeout", "the request did not come in time");
			}
			return false;
		}
		if (!std::exchange(hasBegun, true))
		{
			mBegin = Clock::now();
			mDeadline = mBegin + kRequestTime;
		}
		mReceived.append(bytes.data(), static_cast<std::size_t>(count));
		end = FindHeadEnd(mReceived);
	}
	if (end > kMostHeadBytes)
	{
		Refuse("431 Request Header Fields Too Large",
			"the address and the header fields of a request have at most " + std::to_string(kMostHeadBytes) +
				" bytes");
		return false;
	}
	TakeFields();
	if (mIsTooLarge)
	{
		Refuse("413 Content Too Large",
			"the content of a request has at most " + std::to_string(kMostBodyBytes) + " bytes");
	}
	return !mIsTooLarge;
}

void Connection::TakeFields()
{
	mRange.clear();
	mHasContent = mIsTooLarge = false;
	for (std::size_t at = mReceived.find("\r\n"), end = FindHeadEnd(mReceived); at + 4 < end;)
	{
		std::size_t const next = mReceived.find("\r\n", at + 2);
		std::string const line = mReceived.substr(at + 2, next - at - 2);
		std::optional<std::string> const length = FindField(line, "Content-Length:");
		mHasContent = mHasContent || length || FindField(line, "Transfer-Encoding:");
		mIsTooLarge = mIsTooLarge || (length && std::strtoull(length->c_str(), nullptr, 10) > kMostBodyBytes);
		std::optional<std::string> const range = FindField(line, "Range:");
		if (!range)
		{
			at = next;
			continue;
		}
		mRange += (mRange.empty() ? "" : ",") + *range;
		mReceived.erase(at, next - at);
		end = FindHeadEnd(mReceived);
	}
	mHeadEnd = FindHeadEnd(mReceived);
}

Connection::Patience Connection::GetRequestPatience() const
{
	return {mDeadline, mBegin + kCrowdedRequestTime};
}

bool Connection::WaitFor(short inEvents, Patience const& inPatience) const
{
	while (!mState.mIsEnding)
	{
		auto const deadline = mState.mIsCrowded ? std::min(inPatience.mDeadline, inPatience.mCrowdedDeadline)
												: inPatience.mDeadline;
		auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
		if (left.count() <= 0)
		{
			return false;
		}
		pollfd entry{mSocket, inEvents, 0};
		int const count = ::poll(&entry, 1, static_cast<int>(std::min(left, kWaitStep).count()));
		if (count > 0)
		{
			return (entry.revents & (inEvents | POLLHUP)) != 0;
		}
		if (count < 0 && errno != EINTR)
		{
			return false;
		}
	}
	return false;
}

ssize_t Connection::Receive(char* outBytes, size_t inSize, Patience const& inPatience)
{
	while (WaitFor(POLLIN, inPatience))
	{
		ssize_t const count = ::recv(mSocket, outBytes, inSize, MSG_DONTWAIT);
		if (count >= 0 || (errno != EAGAIN && errno != EINTR))
		{
			return count;
		}
	}
	return -1;
}

void Connection::Refuse(char const* inStatus, std::string const& inReason)
{
	mIsRefused = true;
	std::string const body = ToText({{"error", inReason}});
	std::string const text =
		std::string("HTTP/1.1 ") + inStatus +
		"\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
		"\r\nConnection: close\r\nCache-Control: no-store\r\n"
		"X-Content-Type-Options: nosniff\r\n\r\n" +
		body;
	::send(mSocket, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void Connection::ReadRest()
{
	::shutdown(mSocket, SHUT_WR);
	auto const now = Clock::now();
	Patience const patience{now + kRestTime, now + kCrowdedRestTime};
	std::array<char, 16384> bytes{};
	std::size_t read = 0;
	for (ssize_t count = 1; count > 0 && read < kMostRestBytes; read += static_cast<std::size_t>(count))
	{
		count = std::max<ssize_t>(Receive(bytes.data(), bytes.size(), patience), 0);
	}
}

bool Connection::is_readable() const
{
	return mRead < mReceived.size() || WaitFor(POLLIN, GetRequestPatience());
}

bool Connection::is_writable() const
{
	auto const now = Clock::now();
	return WaitFor(POLLOUT, {now + kStallTime, now + kCrowdedStallTime});
}

ssize_t Connection::read(char* outBytes, size_t inSize)
{
	if (mRead < mReceived.size())
	{
		std::size_t const count = std::min(inSize, mReceived.size() - mRead);
		std::copy_n(mReceived.begin() + static_cast<std::ptrdiff_t>(mRead), count, outBytes);
		mRead += count;
		return static_cast<ssize_t>(count);
	}
	return Receive(outBytes, inSize, GetRequestPatience());
}

ssize_t Connection::write(char const* inBytes, size_t inSize)
{
	while (is_writable())
	{
		ssize_t const count = ::send(mSocket, inBytes, inSize, MSG_NOSIGNAL | MSG_DONTWAIT);
		if (count >= 0 || (errno != EAGAIN && errno != EINTR))
		{
			return count;
		}
	}
	return -1;
}

void Connection::get_remote_ip_and_port(std::string& outAddress, int& outPort) const
{
	sockaddr_storage address{};
	socklen_t size = sizeof address;
	if (::getpeername(mSocket, reinterpret_cast<sockaddr*>(&address), &size) == 0)
	{
		FormatAddress(address, outAddress, outPort);
	}
}

void Connection::get_local_ip_and_port(std::string& outAddress, int& outPort) const
{
	sockaddr_storage address{};
	socklen_t size = sizeof address;
	if (::getsockname(mSocket, reinterpret_cast<sockaddr*>(&address), &size) == 0)
	{
		FormatAddress(address, outAddress, outPort);
	}
}

} // namespace SonaroCommand::Serve
