#pragma once

#include "RenderOutput.h"
#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/Render/OutputLevels.h"
#include "SonaroHost/Render/RenderedFile.h"

#include <functional>
#include <optional>
#include <vector>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// What a job is to render, whatever it renders it from.
struct RenderPlan
{
	int mSampleRate = 0;
	SN::AudioChannelLayout mLayout;
	OutputFormat mFormat;
	// The linear gain of the whole.
	float mGain = 1.0f;
	OutputLevels mLevels;
	Measuring mMeasuring = Measuring::eNothing;
	// The mix, which is measured where loudness is to be found.
	RenderedFile mMix;
	// What is written: the mix itself, or stems.
	std::vector<RenderedFile> mFiles;
	bool mWritesMix = true;
};

// One run over what goes into a file, or over the mix.
struct RenderPass
{
	RenderedFile const& mFile;
	// Each track is to be measured meanwhile.
	bool mMeasuresTracks = false;
	// It does not only measure.
	bool mWrites = true;
};

// The work of a render job: which passes it takes, one after the other.
//
// Normalizing renders the mix once more before, into a meter: that takes time instead of room on the disk, and both
// passes have the same samples. With a limiter, which makes the mix softer, it is repeated until the loudness is right
// to 0.02 LU, at most six times.
class RenderPasses
{
public:
	using Sink = std::function<void(dsp::AudioBuffer& ioBlock)>;
	// Renders a pass, giving the sink each block of its file's range, in which the sink works. False when asked to
	// stop; exceptions pass through.
	using Renderer = std::function<bool(RenderPass const& inPass, Sink const& inSink)>;

	RenderPasses(RenderPlan inPlan, Renderer inRenderer, ProgressCallback inProgress);

	// Nothing when asked to stop. Otherwise all files have got their names, after the last was complete. Throws a
	// HostError: then none has.
	std::optional<RenderedFiles> Run();

private:
	// Each of them is false when asked to stop.
	bool MeasureMix();
	bool Normalize();
	bool WriteFiles();
	bool Render(RenderOutput& ioOutput, RenderPass const& inPass);

	bool NeedsMixAlone() const;
	bool MeasuresTracks() const { return mPlan.mMeasuring == Measuring::eTracks; }
	// The setup of a pass that only measures the mix.
	RenderOutput::Setup MakeMeasuringSetup() const;

	RenderPlan mPlan;
	Renderer mRenderer;
	ProgressCallback mReport;
	RenderOutput::Setup mSetup;
	RenderedFiles mResult;
	RenderProgress mProgress;
};

} // namespace SonaroHost
