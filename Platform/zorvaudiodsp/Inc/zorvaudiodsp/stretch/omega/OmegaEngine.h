#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/ResultCodes.h"

namespace dsp::stretch::omega
{

enum class OmegaEngineKind
{
	// Splices in the time domain, and a phase vocoder for steady sound whose notes splices would detune. Always there.
	kSplice,
	// The R3 engine of the Rubber Band Library in its real-time mode, in builds with SONARO_WITH_RUBBERBAND. It may
	// allocate while it runs, and gives no source back bit for bit at a ratio of 1.
	kRubberBand,
};

// How far ratio and pitch of an engine may go.
struct OmegaLimits
{
	float mMinRatio = 1.0f;
	float mMaxRatio = 1.0f;
	float mMinSemitones = 0.0f;
	float mMaxSemitones = 0.0f;
};

// How a stream is stretched.
struct StreamSettings
{
	// Not 0: compares more places, and more of the sound after them, for each splice.
	unsigned char mPreferAccuracy = 0;
	// How far, in milliseconds, a moment may be heard from its place, about; from 10 to 37. Below 30, steady sound is
	// spliced, too, and the lowest tones are off their pitch.
	float mReach = 37.0f;
	// How readily the start of a sound counts as an onset that is neither repeated nor left out: 1 for a rise of
	// 6 dB, more for smaller rises, 0 for never.
	float mOnsetSensitivity = 1.0f;
};

// Changes the duration of sound, and its pitch apart from that, while it plays.
//
// Ratio    Duration of the output by duration of the source: 0.5 is twice as fast. May change at each block.
// Counts   Output n belongs to the source at the integral of 1 / ratio from the start to n, with nothing added up
//          that rounding could carry away: the source that is asked for never drifts from it. The first output
//          belongs to the first input; what an engine has to look ahead comes in with the first block.
// Calls    For each block: SetRatio and SetPitch, then GetInputNeeded, then Process with just as much input.
// Memory   Create alone allocates in the engine that is built in. See OmegaEngineKind for the other one.
// Threads  One at a time for an engine.
class ZORV_API OmegaEngine
{
public:
	// Makes an engine of the kind of GetOmegaEngineKind, which Destroy disposes of. inReserved is 0. Limits of
	// the ratio lie within 0.001 and 1000, those of the pitch within 60 semitones. eInvalidArgument, with outEngine left
	// alone, for others or a lower limit above the upper one, no channels or more than 64, no block, or a rate that is
	// not above 0.
	static zorvcore::Result Create(OmegaEngine** outEngine, float inSampleRate, unsigned inNumChannels,
		unsigned inBlockSize, float inReserved, float inMinRatio, float inMaxRatio, float inMinSemitones,
		float inMaxSemitones);
	// The same for a kind of the caller's choice, whatever others of the process chose. eInvalidArgument, too, for a
	// kind that was not built in.
	static zorvcore::Result CreateOfKind(OmegaEngine** outEngine, OmegaEngineKind inKind, float inSampleRate,
		unsigned inNumChannels, unsigned inBlockSize, OmegaLimits const& inLimits);

	// The ratio at the start and at the end of the next block, of which the mean is played. Clamped to the limits;
	// what is not a number changes nothing.
	virtual void SetRatio(float inStartRatio, float inEndRatio) = 0;
	// In semitones, likewise. A pitch that makes up for the ratio, 12 * log2(1 / ratio), plays as a tape does: by
	// conversion of the rate alone, without a splice.
	virtual void SetPitch(float inStartSemitones, float inEndSemitones) = 0;

	// The most samples that Process will give now.
	virtual unsigned GetOutputLimit() const = 0;
	// The most input that a block of that size can ask for at that ratio or a higher one, the first block included.
	virtual unsigned GetInputForBlock(unsigned inBlockSize, float inRatio) const = 0;
	// The input that so much output takes now.
	virtual unsigned GetInputNeeded(unsigned inNumOutput) const = 0;

	// Starts a stream, of which inNumInput samples are there at least.
	virtual void Begin(float inSampleRate, StreamSettings const* inSettings, unsigned inNumInput) = 0;
	// The source goes on at another place, where so many samples are left at least: what was taken in is forgotten,
	// and the next input belongs to the next output.
	virtual void SetSourceRemaining(unsigned inNumInput) = 0;
	// Gives inNumOutput samples, at most GetOutputLimit, and takes exactly GetInputNeeded(inNumOutput) of each
	// channel. Outputs may not overlap inputs.
	virtual void Process(unsigned inNumOutput, float const* const* inInputs, float* const* outOutputs) = 0;
	virtual void End() = 0;

	// Null is ignored.
	static void Destroy(OmegaEngine* inEngine);

protected:
	OmegaEngine() = default;
	OmegaEngine(OmegaEngine const&) = delete;
	OmegaEngine& operator=(OmegaEngine const&) = delete;
	virtual ~OmegaEngine() = default;
};

ZORV_API bool IsOmegaEngineKindBuiltIn(OmegaEngineKind inKind);
// The kind for those whose own interfaces name none, such as generators that the engine's factory makes: what
// OmegaEngine::Create makes from now on, in the whole process. Any thread; like the factory of time scalers, it is chosen
// before graphs are made. False, with nothing changed, for a kind that was not built in.
ZORV_API bool SetOmegaEngineKind(OmegaEngineKind inKind);
ZORV_API OmegaEngineKind GetOmegaEngineKind();

} // namespace dsp::stretch::omega
