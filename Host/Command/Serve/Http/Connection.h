#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <string>

namespace SonaroCommand::Serve
{

// A client's socket, with limits that no client can exceed: on the size of a request's head, on the time in which a request
// has to come, and on the time that a reader may stand still.
//
// Threads  One at a time.
class Connection final : public httplib::Stream
{
public:
	// The most bytes of content.
	static constexpr std::size_t kMostBodyBytes = 65536;

	// inIsEnding: makes all waits end soon. It outlives this.
	Connection(socket_t inSocket, std::atomic<bool> const& inIsEnding);
	// Closes the socket.
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

	bool is_readable() const override;
	bool is_writable() const override;
	ssize_t read(char* outBytes, size_t inSize) override;
	ssize_t write(char const* inBytes, size_t inSize) override;
	void get_remote_ip_and_port(std::string& outAddress, int& outPort) const override;
	void get_local_ip_and_port(std::string& outAddress, int& outPort) const override;
	socket_t socket() const override { return mSocket; }

private:
	using Clock = std::chrono::steady_clock;

	// Whether the socket is ready for what poll calls inEvents.
	bool WaitFor(short inEvents, Clock::time_point inDeadline) const;
	// 0 at the end, below 0 for an error.
	ssize_t Receive(char* outBytes, size_t inSize, Clock::time_point inDeadline);
	void Refuse(char const* inStatus);
	void TakeFields();

	socket_t mSocket;
	std::atomic<bool> const& mIsEnding;
	Clock::time_point mDeadline;
	// What was received and not read yet: the rest of the head and what follows.
	std::string mReceived;
	std::size_t mRead = 0;
	std::string mRange;
	bool mHasContent = false;
	bool mIsTooLarge = false;
};

} // namespace SonaroCommand::Serve
