#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace SonaroHost::Effects
{

// Messages of bytes from one thread to another, first in, first out.
//
// Threads  Write: one. Read: one. Nothing waits, locks or allocates after the constructor.
class MessageRing
{
public:
	// inBytes: the room for messages, each of which takes four bytes more than its own; also that of the longest one.
	explicit MessageRing(std::size_t inBytes);

	// False, and nothing is written, where there is no room.
	bool Write(void const* inData, std::uint32_t inSize);
	// The next message, for as long as Read is not called again; null where there is none.
	void const* Read(std::uint32_t& outSize);

private:
	void Copy(std::uint64_t inPosition, void const* inData, std::size_t inSize);
	void CopyOut(std::uint64_t inPosition, void* outData, std::size_t inSize) const;

	std::vector<std::byte> mBytes;
	std::vector<std::byte> mMessage;
	// Bytes since the beginning.
	std::atomic<std::uint64_t> mWritten{0};
	std::atomic<std::uint64_t> mRead{0};
};

} // namespace SonaroHost::Effects
