#pragma once

#include "Sonaro/IAudioMeterSetter.h"
#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Playback/OutputDevice.h"
#include "SonaroHost/Playback/PlaybackState.h"
#include "SonaroHost/Render/Programme.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Playback
{

class RenderThread;

// How a playback is run.
struct PlaybackSettings
{
	// How much is rendered ahead of what the device has taken, in seconds: from 0.005 to 1. A seek is heard after it.
	// At least two of the device's blocks, and half as much again as it asks for at once.
	double mAheadSeconds = 0.02;
	// What the device is asked for at a time; 0 for a quarter of what is rendered ahead.
	unsigned mDeviceBlockFrames = 0;
	// Hear on the render thread what is put into the ring, and are reset where playing begins anew. Their Init is called here.
	std::vector<SN::InterfaceRef<SN::IAudioMeterSetter>> mMeters = {};
	// Whether rendering asks the system for real-time scheduling, without which other programs may hold it up by several
	// milliseconds. Where the process is not permitted any, it runs at a raised priority. Not for simulated devices that
	// are always busy.
	bool mIsRealtime = true;
};

// Plays a programme on a device: the same samples that a render of it writes, bit for bit, wherever it is started, in
// loops and in reverse, except that playing which is broken off is heard for 2 ms more, fading out, and that
// effects that remember keep their memory.
//
// Work     A render thread keeps a ring filled from which the device takes what it plays; media are read ahead by the
//          prefetch service of the process. Playing begins when the first 100 ms of media were read.
// Misses   What comes too late is silence, with a fade of 2 ms, and heard afterwards. See PlaybackState.
// Failure  A device that is lost, or media that cannot be decoded, stop the playback. Play tries again.
// Prefetch Reading ahead is measured for the process as a whole: one playback at a time.
// Threads  Any, one call at a time; GetState, TakeOver, TakeWarnings and MakeUpForLatency
//          may come beside all others. The device's callback neither
//          waits, locks nor allocates, nor does rendering a block; between blocks, the render thread takes commands and
//          asks for media, for which it allocates and takes short locks.
class Playback
{
public:
	// Opens and starts the device, and is stopped at the programme's start. Throws a HostError for a device that is not there,
	// for settings that are out of range, and as MakeGraph does. The device outlives this.
	Playback(Programme const& inProgramme, OutputDevice& ioDevice, PlaybackSettings const& inSettings = {});
	~Playback();
	Playback(Playback const&) = delete;
	Playback& operator=(Playback const&) = delete;

	// From where it is, and at the programme's end from its start. Throws a HostError when a device that was lost is not
	// there again.
	void Play();
	// It can be played on from the place that was heard last, without a gap or a repetition.
	void Stop();
	// To a frame of the programme, playing or not. Frames beyond its ends count as these.
	void Seek(std::int64_t inFrame);
	// Goes round in the range once it is there, in either direction. Throws a HostError for one that is empty or not
	// within the programme.
	void SetLoop(std::optional<ProgrammeRange> const& inLoop);
	// From -4 to 4, backwards below 0, pitch following. Throws a HostError for others, and for magnitudes below 0.01.
	void SetSpeed(double inSpeed);
	// For a pointer that is dragged: lets a grain of 60 ms be heard at that frame, in the direction in which the pointer
	// moves. A playback that runs stops there.
	void Scrub(std::int64_t inFrame);

	// Plays another programme from now on, at the same place: both are heard for 10 ms. Builds its graph and returns when
	// the one before is gone, so that a thread of its own may wait here. Throws a HostError, and goes on as before, when
	// there is no such graph or when rate or channels are other ones.
	void TakeOver(Programme const& inProgramme);

	// What is to be said of effects that have stopped working since the last call, or were given samples that are no
	// numbers: each once, with name, place and time. They are bypassed from then on, such samples silent.
	std::vector<std::string> TakeWarnings();
	// Where an effect has come to report more latency than is made up for: as TakeOver of the same programme, which makes up
	// for it. False where none has.
	bool MakeUpForLatency();

	PlaybackState GetState() const;

	// Returns when all commands are taken and, while it plays, the ring is filled as far as it goes: for devices whose
	// clock is the program's own. False when that took longer.
	bool WaitUntilFilled(std::chrono::milliseconds inLongest) const;

private:
	// Opens the device, which then says how much it asks for.
	std::unique_ptr<RenderThread> Open(Programme const& inProgramme, PlaybackSettings const& inSettings);
	// Gets a device that was lost to run again.
	void Reopen();

	OutputDevice& mDevice;
	DeviceFormat mFormat;
	std::unique_ptr<RenderThread> mThread;
};

} // namespace SonaroHost::Playback
