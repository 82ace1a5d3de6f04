#include "Connection.h"

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

Connection::Connection(socket_t inSocket, std::atomic<bool> const& inIsEnding)
	: mSocket(inSocket),
	  mIsEnding(inIsEnding)
{
}

Connection::~Connection()
{
	::shutdown(mSocket, SHUT_RDWR);
	::close(mSocket);
}

bool Connection::ReadHead()
{
	mReceived.erase(0, std::exchange(mRead, 0));
	mDeadline = Clock::now() + kIdleTime;
	bool hasBegun = !mReceived.empty();
	std::size_t end = FindHeadEnd(mReceived);
	while (end == std::string::npos && mReceived.size() <= kMostHeadBytes)
	{
		std::array<char, 4096> bytes{};
		ssize_t const count = Receive(bytes.data(), bytes.size(), mDeadline);
		if (count <= 0)
		{
			if (hasBegun && count < 0 && !mIsEnding)
			{
				Refuse("408 Request Timeout");
			}
			return false;
		}
		if (!std::exchange(hasBegun, true))
		{
			mDeadline = Clock::now() + kRequestTime;
		}
		mReceived.append(bytes.data(), static_cast<std::size_t>(count));
		end = FindHeadEnd(mReceived);
	}
	if (end > kMostHeadBytes)
	{
		Refuse("431 Request Header Fields Too Large");
		return false;
	}
	TakeFields();
	if (mIsTooLarge)
	{
		Refuse("413 Content Too Large");
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
}

bool Connection::WaitFor(short inEvents, Clock::time_point inDeadline) const
{
	while (!mIsEnding)
	{
		auto const left = std::chrono::ceil<std::chrono::milliseconds>(inDeadline - Clock::now());
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

ssize_t Connection::Receive(char* outBytes, size_t inSize, Clock::time_point inDeadline)
{
	while (WaitFor(POLLIN, inDeadline))
	{
		ssize_t const count = ::recv(mSocket, outBytes, inSize, MSG_DONTWAIT);
		if (count >= 0 || (errno != EAGAIN && errno != EINTR))
		{
			return count;
		}
	}
	return -1;
}

void Connection::Refuse(char const* inStatus)
{
	std::string const text = std::string("HTTP/1.1 ") + inStatus +
							 "\r\nContent-Length: 0\r\nConnection: close\r\n"
							 "X-Content-Type-Options: nosniff\r\n\r\n";
	::send(mSocket, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

bool Connection::is_readable() const
{
	return mRead < mReceived.size() || WaitFor(POLLIN, mDeadline);
}

bool Connection::is_writable() const
{
	return WaitFor(POLLOUT, Clock::now() + kStallTime);
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
	return Receive(outBytes, inSize, mDeadline);
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
