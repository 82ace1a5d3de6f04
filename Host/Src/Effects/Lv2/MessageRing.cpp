#include "MessageRing.h"

#include <algorithm>

namespace SonaroHost::Effects
{

MessageRing::MessageRing(std::size_t inBytes)
	: mBytes(inBytes),
	  mMessage(inBytes)
{
}

bool MessageRing::Write(void const* inData, std::uint32_t inSize)
{
	std::uint64_t const written = mWritten.load(std::memory_order_relaxed);
	std::uint64_t const used = written - mRead.load(std::memory_order_acquire);
	std::uint64_t const needed = sizeof(inSize) + std::uint64_t{inSize};
	if (needed > mBytes.size() - used)
	{
		return false;
	}
	Copy(written, &inSize, sizeof(inSize));
	Copy(written + sizeof(inSize), inData, inSize);
	mWritten.store(written + needed, std::memory_order_release);
	return true;
}

void const* MessageRing::Read(std::uint32_t& outSize)
{
	std::uint64_t const read = mRead.load(std::memory_order_relaxed);
	if (read == mWritten.load(std::memory_order_acquire))
	{
		return nullptr;
	}
	CopyOut(read, &outSize, sizeof(outSize));
	CopyOut(read + sizeof(outSize), mMessage.data(), outSize);
	mRead.store(read + sizeof(outSize) + outSize, std::memory_order_release);
	return mMessage.data();
}

void MessageRing::Copy(std::uint64_t inPosition, void const* inData, std::size_t inSize)
{
	std::size_t const begin = inPosition % mBytes.size();
	std::size_t const first = std::min(inSize, mBytes.size() - begin);
	auto const* const data = static_cast<std::byte const*>(inData);
	std::copy_n(data, first, mBytes.data() + begin);
	std::copy_n(data + first, inSize - first, mBytes.data());
}

void MessageRing::CopyOut(std::uint64_t inPosition, void* outData, std::size_t inSize) const
{
	std::size_t const begin = inPosition % mBytes.size();
	std::size_t const first = std::min(inSize, mBytes.size() - begin);
	auto* const data = static_cast<std::byte*>(outData);
	std::copy_n(mBytes.data() + begin, first, data);
	std::copy_n(mBytes.data(), inSize - first, data + first);
}

} // namespace SonaroHost::Effects
