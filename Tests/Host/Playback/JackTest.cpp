// Plays on a JACK server without hardware, into a client that keeps what it gets.

#include "Host/ProgramRun.h"

#include <gmock/gmock.h>
#include <jack/jack.h>
#include <nlohmann/json.hpp>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <sstream>
#include <thread>

namespace SonaroHost::Testing::JackTest
{
namespace
{

using namespace std::chrono_literals;
using testing::HasSubstr;
using Json = nlohmann::json;

constexpr int kRate = 48000;
constexpr std::size_t kMostFrames = 60 * kRate;

bool IsJackInstalled()
{
	return std::system("command -v jackd > /dev/null 2>&1") == 0;
}

bool Await(std::function<bool()> const& inIs)
{
	bool is = inIs();
	for (unsigned i = 0; i < 2000 && !is; ++i)
	{
		std::this_thread::sleep_for(5ms);
		is = inIs();
	}
	return is;
}

// A client with two inputs.
class Capture
{
public:
	Capture()
		: mClient(jack_client_open("capture", JackNoStartServer, nullptr)),
		  mSamples(2 * kMostFrames)
	{
		if (!mClient)
		{
			return;
		}
		for (jack_port_t*& port : mPorts)
		{
			std::string const name = &port == mPorts ? "left" : "right";
			port = jack_port_register(mClient, name.c_str(), JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
		}
		jack_set_process_callback(mClient, &Capture::Process, this);
		jack_set_xrun_callback(mClient, &Capture::NoteLate, this);
		jack_activate(mClient);
	}
	~Capture()
	{
		if (mClient)
		{
			jack_client_close(mClient);
		}
	}
	Capture(Capture const&) = delete;
	Capture& operator=(Capture const&) = delete;

	bool IsOpen() const { return mClient != nullptr; }
	// Hears whoever plays to the server's outputs.
	bool Connect()
	{
		std::unique_ptr<char const*, decltype(&jack_free)> const found(
			jack_get_ports(mClient, "PortAudio.*", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput),
			[](void* ioNames) { jack_free(ioNames); });
		char const** const names = found.get();
		return names && names[0] && names[1] && Connect(names[0], mPorts[0]) && Connect(names[1], mPorts[1]);
	}
	bool HasSound() const
	{
		std::vector<float> const heard = Take();
		return std::any_of(heard.begin(), heard.end(), [](float in) { return in != 0.0f; });
	}
	unsigned CountLate() const { return mLate; }
	std::vector<float> Take() const
	{
		return {mSamples.begin(), mSamples.begin() + static_cast<std::ptrdiff_t>(2 * mFrames)};
	}

private:
	bool Connect(char const* inName, jack_port_t* inPort)
	{
		return jack_connect(mClient, inName, jack_port_name(inPort)) == 0;
	}
	static int NoteLate(void* ioCapture)
	{
		++static_cast<Capture*>(ioCapture)->mLate;
		return 0;
	}
	static int Process(jack_nframes_t inFrames, void* ioCapture)
	{
		Capture& capture = *static_cast<Capture*>(ioCapture);
		std::size_t const done = capture.mFrames;
		std::size_t const count = std::min<std::size_t>(inFrames, kMostFrames - done);
		for (std::size_t channel = 0; channel < 2; ++channel)
		{
			auto const* const samples =
				static_cast<float const*>(jack_port_get_buffer(capture.mPorts[channel], inFrames));
			for (std::size_t i = 0; i < count; ++i)
			{
				capture.mSamples[2 * (done + i) + channel] = samples[i];
			}
		}
		capture.mFrames = done + count;
		return 0;
	}

	jack_client_t* mClient;
	jack_port_t* mPorts[2] = {};
	std::vector<float> mSamples;
	std::atomic<std::size_t> mFrames{0};
	std::atomic<unsigned> mLate{0};
};

class JackTest : public ProgramTest
{
protected:
	// Noise after enough silence to be connected in.
	void WriteInput(double inSeconds)
	{
		Sound sound = MakeSound(2, kRate, static_cast<std::int64_t>(inSeconds * kRate));
		std::fill_n(sound.mSamples.begin(), kRate, 0.0f);
		WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	}

	// A server of its own, while something is done with its process id. False when it does not run.
	bool RunServer(std::function<void(int)> const& inAction)
	{
		// JACK keeps eight names of servers, those of killed ones too until a server of that name starts again.
		std::string const name =
			std::string("sonaro-") + testing::UnitTest::GetInstance()->current_test_info()->name();
		setenv("JACK_DEFAULT_SERVER", name.c_str(), 1);
		setenv("JACK_NO_START_SERVER", "1", 1);
		jack_set_error_function([](char const*) {});
		bool wasThere = false;
		ProgramStart server;
		server.mArguments = {
			"jackd", "-S", "-r", "-n", name, "-d", "dummy", "-r", std::to_string(kRate), "-p", "1024"};
		server.mFolder = mFolder.Get().string();
		RunProgram("/usr/bin/env", server,
			[&](int inProcess)
			{
				wasThere = Await([] { return Capture().IsOpen(); });
				if (wasThere)
				{
					inAction(inProcess);
				}
				kill(inProcess, SIGTERM);
			});
		return wasThere;
	}

	ProgramResult Play(std::function<void(int)> const& inMeanwhile)
	{
		return Run({"play", "in.wav", "--device", "system", "--json", "--ahead", "500"}, inMeanwhile);
	}

	// The last event; null without any.
	static Json ReadLast(std::string const& inOutput)
	{
		std::istringstream lines(inOutput);
		Json last;
		for (std::string line; std::getline(lines, line);)
		{
			last = Json::parse(line, nullptr, false);
		}
		return last;
	}
};

TEST_F(JackTest, AClientGetsWhatAnExportWrites)
{
	if (!IsJackInstalled())
	{
		GTEST_SKIP() << "jackd is not installed; jackd2 brings it";
	}
	WriteInput(4.0);
	ASSERT_EQ(Run({"render", "in.wav", "-o", "out.wav"}).mExitCode, 0);
	Sound const exported = ReadSound(mFolder / "out.wav");
	constexpr unsigned kAttempts = 5;
	for (unsigned attempt = 0; attempt < kAttempts; ++attempt)
	{
		std::vector<float> heard;
		unsigned late = 0;
		Json end;
		ASSERT_TRUE(RunServer(
			[&](int)
			{
				Capture capture;
				ProgramResult const result =
					Play([&](int) { EXPECT_TRUE(Await([&] { return capture.Connect(); })); });
				EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
				end = ReadLast(result.mOutput);
				late = capture.CountLate();
				heard = capture.Take();
			}));
		if (late > 0)
		{
			std::cerr << "JACK was late in " << late << " of its cycles\n";
			continue;
		}
		// Half a second ahead, nothing is late where JACK is not.
		ASSERT_EQ(end["misses"], 0);
		auto const isSound = [](float in) { return in != 0.0f; };
		auto const first = std::find_if(heard.begin(), heard.end(), isSound);
		auto const source = std::find_if(exported.mSamples.begin(), exported.mSamples.end(), isSound);
		ASSERT_GE(heard.end() - first, exported.mSamples.end() - source);
		EXPECT_TRUE(std::equal(source, exported.mSamples.end(), first));
		return;
	}
	GTEST_SKIP() << "JACK itself was late each time";
}

TEST_F(JackTest, TheEndOfTheServerIsALossThatIsReported)
{
	if (!IsJackInstalled())
	{
		GTEST_SKIP() << "jackd is not installed; jackd2 brings it";
	}
	WriteInput(30.0);
	ProgramResult result;
	ASSERT_TRUE(RunServer(
		[&](int inServer)
		{
			Capture capture;
			result = Play(
				[&](int)
				{
					EXPECT_TRUE(Await([&] { return capture.Connect(); }));
					EXPECT_TRUE(Await([&] { return capture.HasSound(); }));
					kill(inServer, SIGKILL);
				});
		}));
	EXPECT_EQ(result.mExitCode, 1);
	EXPECT_THAT(result.mErrors, HasSubstr("the sound device"));
}

} // namespace
} // namespace SonaroHost::Testing::JackTest
