#pragma once

#include "ServerState.h"

#include <httplib.h>

#include <chrono>
#include <string>

namespace SonaroCommand::Serve
{

// A client's socket, with limits that no client can exceed: on the size of a request's head, on the time in which a request
// has to come, and on the time that a reader may stand still. They are shorter while other clients wait.
//
// Threads  One at a time.
class Connection final : public httplib::Stream
{
public:
	// The most bytes of content.
	static constexpr std::size_t kMostBodyBytes = 65536;

	// inState outlives this.
	Connection(socket_t inSocket, ServerState const& inState);
	// Closes the socket, once what the client still sends to a request that was refused has been read for a while.
	~Connection() override;
	Connection(Connection const&) = delete;
	Connection& operator=(Connection const&) = delete;

	// Waits for a request and reads its head. False when there is none in time, or one that was refused.
	bool ReadHead();
	// Of the head that was read: the value of Range, which is kept from the library, since it answers what the standard
	// says is to be passed over.
	std::string const& GetRange() const { return mRange; }

	// Whether the head announces content, of which some might be left when the request is refused.
	bool HasContent() const { return mHasContent; }
	// Whether the library has read all of the head, which it does not do of one that is not valid.
	bool IsHeadRead() const { return mRead >= mHeadEnd; }

	bool is_readable() const override;
	bool is_writable() const override;
	ssize_t read(char* outBytes, size_t inSize) override;
	ssize_t write(char const* inBytes, size_t inSize) override;
	void get_remote_ip_and_port(std::string& outAddress, int& outPort) const override;
	void get_local_ip_and_port(std::string& outAddress, int& outPort) const override;
	socket_t socket() const override { return mSocket; }

private:
	using Clock = std::chrono::steady_clock;

	// How long to wait for a client.
	struct Patience
	{
		Clock::time_point mDeadline;
		// While others wait.
		Clock::time_point mCrowdedDeadline;
	};

	Patience GetRequestPatience() const;
	// Whether the socket is ready for what poll calls inEvents.
	bool WaitFor(short inEvents, Patience const& inPatience) const;
	// 0 at the end, below 0 for an error.
	ssize_t Receive(char* outBytes, size_t inSize, Patience const& inPatience);
	// Answers what goes no further, and ends the connection.
	void Refuse(char const* inStatus, std::string const& inReason);
	void ReadRest();
	void TakeFields();

	socket_t mSocket;
	ServerState const& mState;
	// Of the wait for a request, and then of the request itself.
	Clock::time_point mBegin;
	Clock::time_point mDeadline;
	// What was received and not read yet: the rest of the head and what follows.
	std::string mReceived;
	std::size_t mRead = 0;
	std::size_t mHeadEnd = 0;
	std::string mRange;
	bool mHasContent = false;
	bool mIsTooLarge = false;
	bool mIsRefused = false;
};

} // namespace SonaroCommand::Serve
