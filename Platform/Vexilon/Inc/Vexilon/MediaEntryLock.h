#pragma once

#include <atomic>
#include <cstdint>

namespace VX
{

// What lets readers, a writer and a purge meet at one entry of a store without waiting for each other. Each
// Try gives up at once where the table has no arrow; it tries again only when the word changed under it
// and the arrow is still there.
//
//	word                     meaning                 Try...                     Release...
//	0                        absent                  Write -> 0x00010000
//	0x00010000               being written                                      Write -> 0x80000000
//	0x80000000               there                   Read  -> 0x80000001
//	                                                 Purge -> 0x01000000
//	0x80000000 + n           there, n readers        Read  -> + 1               Read  -> - 1
//	0x8000FFFF               there, readers full                                Read  -> - 1
//	0x01000000               being purged                                       Purge -> 0
//
//	Orders: a Try that succeeds acquires, a Release releases. So a reader sees all that the writer has
//	stored; a purge comes after all that readers have read; and a writer after a purge finds the entry as
//	the purge has left it. A Try that fails orders nothing.
//
// A Release without its Try does nothing.
class MediaEntryLock
{
public:
	static constexpr std::uint32_t kPresent = 0x80000000;
	static constexpr std::uint32_t kPurgers = 0x7F000000;
	static constexpr std::uint32_t kPurger = 0x01000000;
	static constexpr std::uint32_t kWriters = 0x00FF0000;
	static constexpr std::uint32_t kWriter = 0x00010000;
	static constexpr std::uint32_t kReaders = 0x0000FFFF;

	// The arrows of the table: whether a word allows the step, and the word after it.
	static constexpr bool CanRead(std::uint32_t inWord)
	{
		return (inWord & kPresent) != 0 && (inWord & (kWriters | kPurgers)) == 0 &&
			   (inWord & kReaders) != kReaders;
	}
	static constexpr bool CanWrite(std::uint32_t inWord)
	{
		return (inWord & (kPresent | kWriters | kPurgers)) == 0;
	}
	static constexpr bool CanPurge(std::uint32_t inWord) { return inWord == kPresent; }
	static constexpr bool CanReleaseRead(std::uint32_t inWord) { return (inWord & kReaders) != 0; }
	static constexpr bool CanReleaseWrite(std::uint32_t inWord) { return (inWord & kWriters) != 0; }
	static constexpr bool CanReleasePurge(std::uint32_t inWord) { return (inWord & kPurgers) != 0; }
	static constexpr std::uint32_t AfterRead(std::uint32_t inWord) { return inWord + 1; }
	static constexpr std::uint32_t AfterWrite(std::uint32_t inWord) { return inWord + kWriter; }
	static constexpr std::uint32_t AfterPurge(std::uint32_t) { return kPurger; }
	static constexpr std::uint32_t AfterReleaseRead(std::uint32_t inWord) { return inWord - 1; }
	static constexpr std::uint32_t AfterReleaseWrite(std::uint32_t inWord)
	{
		return (inWord | kPresent) - kWriter;
	}
	static constexpr std::uint32_t AfterReleasePurge(std::uint32_t inWord) { return inWord - kPurger; }

	// Whether a TryRead would succeed, without holding the entry for a moment: a purge at the same time is
	// not turned away by it.
	bool IsReadable() const { return CanRead(mWord.load(std::memory_order_acquire)); }

	bool TryRead() { return Step(&CanRead, &AfterRead, std::memory_order_acquire); }
	bool TryWrite() { return Step(&CanWrite, &AfterWrite, std::memory_order_acquire); }
	bool TryPurge() { return Step(&CanPurge, &AfterPurge, std::memory_order_acquire); }
	void ReleaseRead() { Step(&CanReleaseRead, &AfterReleaseRead, std::memory_order_release); }
	void ReleaseWrite() { Step(&CanReleaseWrite, &AfterReleaseWrite, std::memory_order_release); }
	void ReleasePurge() { Step(&CanReleasePurge, &AfterReleasePurge, std::memory_order_release); }

private:
	bool Step(
		bool (*inCan)(std::uint32_t), std::uint32_t (*inAfter)(std::uint32_t), std::memory_order inOrder)
	{
		std::uint32_t word = mWord.load(std::memory_order_relaxed);
		while (inCan(word))
		{
			if (mWord.compare_exchange_weak(word, inAfter(word), inOrder, std::memory_order_relaxed))
			{
				return true;
			}
		}
		return false;
	}

	std::atomic<std::uint32_t> mWord{0};
};

} // namespace VX
