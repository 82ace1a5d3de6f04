#include "SonaroHost/Automation/PublishedState.h"

#include "Support/Threads.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <thread>

namespace SonaroHost::Testing::PublishedStateTest
{

constexpr unsigned kEdits = 200000;
constexpr unsigned kStates = kEdits + 4;

// Its memory is never used again, so that whoever looks at a dead state finds out.
struct State
{
	explicit State(unsigned inIndex)
		: mIndex(inIndex)
	{
		++sAlive;
	}
	~State()
	{
		sIsDead[mIndex].store(true);
		--sAlive;
	}
	static void* operator new(std::size_t inSize)
	{
		sUsed += inSize;
		return sMemory.get() + sUsed - inSize;
	}
	static void operator delete(void*) {}

	unsigned mIndex;

	static inline std::atomic<unsigned> sAlive{0};
	static inline std::array<std::atomic<bool>, kStates> sIsDead{};
	static inline std::size_t sUsed = 0;
	static inline std::unique_ptr<std::byte[]> const sMemory =
		std::make_unique<std::byte[]>(kStates * sizeof(unsigned));
};

TEST(PublishedState, NoReaderSeesADeadStateAndNoneOutlivesItsReaders)
{
	State::sUsed = 0;
	for (std::atomic<bool>& isDead : State::sIsDead)
	{
		isDead = false;
	}
	PublishedState<State> published(std::make_unique<State const>(0u));
	std::atomic<bool> isDone{false};
	SN::Testing::StartLine begin(2);
	unsigned dead = 0;
	unsigned backwards = 0;
	std::thread reader(
		[&]
		{
			unsigned last = 0;
			begin.Wait();
			while (!isDone.load())
			{
				PublishedState<State>::Reader const state(published);
				unsigned const index = state->mIndex;
				dead += State::sIsDead[index].load() ? 1 : 0;
				backwards += index < last ? 1 : 0;
				last = index;
			}
		});
	begin.Wait();
	for (unsigned i = 1; i <= kEdits; ++i)
	{
		published.Replace([i](State const&) { return std::make_unique<State const>(i); });
	}
	isDone = true;
	reader.join();
	EXPECT_EQ(dead, 0u);
	EXPECT_EQ(backwards, 0u);

	auto const next = [](State const& inOld) { return std::make_unique<State const>(inOld.mIndex + 1); };
	{
		PublishedState<State>::Reader const held(published);
		published.Replace(next);
		published.Replace(next);
		EXPECT_FALSE(State::sIsDead[held->mIndex].load());
	}
	// With nobody reading, an edit leaves nothing old behind.
	published.Replace(next);
	EXPECT_EQ(State::sAlive.load(), 1u);
}

} // namespace SonaroHost::Testing::PublishedStateTest
