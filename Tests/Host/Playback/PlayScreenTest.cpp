// The screen of "sonaro play", on a terminal of the test.

#include "Host/Effects/EffectFolders.h"
#include "Host/Media.h"
#include "Host/TimelineJson.h"

#include <gmock/gmock.h>

#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <string>

namespace SonaroHost::Testing::PlayScreenTest
{
namespace
{

using testing::HasSubstr;

// A terminal with a program on it, which ends with this.
class Terminal
{
public:
	Terminal(std::string const& inFolder, std::string const& inInput)
	{
		winsize size{24, kColumns, 0, 0};
		mProcess = forkpty(&mScreen, nullptr, nullptr, &size);
		if (mProcess == 0)
		{
			setenv("TERM", "xterm", 1);
			if (chdir(inFolder.c_str()) == 0)
			{
				execl(SONARO_COMMAND, "sonaro", "play", inInput.c_str(), "--device", "null", nullptr);
			}
			_exit(127);
		}
	}
	~Terminal()
	{
		kill(mProcess, SIGKILL);
		waitpid(mProcess, nullptr, 0);
		close(mScreen);
	}
	Terminal(Terminal const&) = delete;
	Terminal& operator=(Terminal const&) = delete;

	void Type(std::string const& inKeys) const
	{
		EXPECT_EQ(write(mScreen, inKeys.data(), inKeys.size()), static_cast<ssize_t>(inKeys.size()));
	}
	// The screen, once a text is on it. It is drawn as a whole at each new size.
	std::string Await(std::string const& inText)
	{
		std::string screen;
		for (int trial = 0; trial < 100 && screen.find(inText) == std::string::npos; ++trial)
		{
			mColumns = mColumns == kColumns ? kColumns + 10 : kColumns;
			winsize size{24, mColumns, 0, 0};
			EXPECT_EQ(ioctl(mScreen, TIOCSWINSZ, &size), 0);
			screen = ReadUntil("q quit");
		}
		EXPECT_THAT(screen, HasSubstr(inText));
		return screen;
	}
	// What is drawn from now on, up to a text.
	std::string ReadUntil(std::string const& inText) const
	{
		std::string text;
		auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
		while (text.find(inText) == std::string::npos && std::chrono::steady_clock::now() < end)
		{
			pollfd entry{mScreen, POLLIN, 0};
			std::array<char, 4096> bytes{};
			ssize_t const count = poll(&entry, 1, 100) > 0 ? read(mScreen, bytes.data(), bytes.size()) : 0;
			if (count < 0)
			{
				break;
			}
			text.append(bytes.data(), static_cast<std::size_t>(count));
		}
		EXPECT_THAT(text, HasSubstr(inText));
		return text;
	}

private:
	static constexpr unsigned short kColumns = 150;

	int mScreen = -1;
	pid_t mProcess = -1;
	unsigned short mColumns = kColumns;
};

TEST(PlayScreen, KeysMoveGainsAndBypassEffects)
{
	FindTestPlugins();
	TemporaryFolder const folder;
	WriteSound(folder / "tone.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, 48000, 48000));
	Json const effect = {{"OTIO_SCHEMA", "Effect.1"}, {"effect_name", "LV2"},
		{"metadata", {{"sonaro", {{"lv2", {{"uri", "urn:sonaro-test:controls"}}}}}}}};
	Json const track =
		With(Track("Tone", {Clip("clip", "tone.wav", 0.0, 1.0)}), {{"effects", List({effect})}});
	WriteBytes(folder / "edit.otio", Timeline({track}).dump());
	Terminal terminal(folder.Get().string(), "edit.otio");
	EXPECT_THAT(terminal.ReadUntil("q quit"), HasSubstr("   0.0 dB"));
	// Back to a gain that is a little below 1.
	// A key that comes together with a new size may be lost.
	terminal.Type("+++---e");
	terminal.ReadUntil("Frequency 100");
	std::string const back = terminal.Await("of track \"Tone\": Frequency 100");
	EXPECT_THAT(back, HasSubstr("   0.0 dB"));
	EXPECT_THAT(back, testing::Not(HasSubstr("-0.0")));
	terminal.Type("b");
	terminal.ReadUntil("bypassed");
	terminal.Await("of track \"Tone\", bypassed: Frequency 100");
	terminal.Type("b");
	terminal.ReadUntil("Frequency 100");
	terminal.Await("of track \"Tone\": Frequency 100");
	terminal.Type("q");
}

} // namespace
} // namespace SonaroHost::Testing::PlayScreenTest
