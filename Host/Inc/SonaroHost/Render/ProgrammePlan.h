#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Engine/LayoutPlan.h"
#include "SonaroHost/Media/AudioFileSource.h"
#include "SonaroHost/Render/ClipRenderRequest.h"
#include "SonaroHost/Render/Fades.h"

#include <cstdint>
#include <vector>

namespace SonaroHost
{

// One input of a programme, opened and put in its place.
struct PlannedClip
{
	// Counts by the programme's rate: nothing is resampled in it.
	SN::InterfaceRef<AudioFileSource> mSource;
	// The range in the file, in its own frames. A recording that is stretched begins with the file all the same, so that
	// the range is a cut of the whole.
	std::int64_t mFirstFrame = 0;
	std::int64_t mSourceFrames = 0;
	// Channels of the source, in the order of the layout that the plan begins with; empty for all.
	std::vector<unsigned> mChannels;
	LayoutPlan mLayout;
	// Samples of the source for one of the output.
	double mReadingSpeed = 1.0;
	// The range in the output.
	std::int64_t mPosition = 0;
	std::int64_t mFrames = 0;

	AudioFileInfo const& GetInfo() const { return mSource->GetInfo(); }
	// The range in the source.
	std::int64_t GetFirstFrameOfSource() const;
	std::int64_t GetFramesOfSource() const;
	bool IsResampled() const { return mReadingSpeed != 1.0 || GetInfo().mStretch; }
};

// What a request comes to once its inputs are open: where each lies in the output, from which rate and layout
// to which.
class ProgrammePlan
{
public:
	// Throws a HostError when an input cannot be opened or the request does not fit the inputs.
	explicit ProgrammePlan(ClipRenderRequest const& inRequest);

	// The clips in the order of the request; later ones cover earlier ones.
	std::vector<PlannedClip> const& GetClips() const { return mClips; }
	// The rate of the output.
	int GetSampleRate() const { return mSampleRate; }
	SN::FrameRate GetFrameRate() const { return SN::FrameRate::FromSamplesPerSecond(mSampleRate); }
	// How long the output is, in its frames.
	std::int64_t GetFrames() const { return mFrames; }
	// The layout of the mix.
	SN::AudioChannelLayout const& GetLayout() const { return mClips.front().mLayout.GetOutputLayout(); }
	// Who hears the mix with two ears.
	std::optional<Listener> const& GetListener() const { return mListener; }
	// Those at the ends of the output.
	Fades const& GetFades() const { return mFades; }
	// The clips are reversed and in the order of the reversed programme already.
	bool IsReversed() const { return mIsReversed; }
	// The gain of the whole, linear.
	float GetGain() const { return mGain; }
	// The speed of the whole, as it was asked for.
	double GetSpeed() const { return mSpeed; }
	// Whether that speed leaves the pitch as it is.
	bool KeepsPitch() const { return mKeepsPitch; }
	// By how much the pitch is shifted besides.
	double GetSemitones() const { return mSemitones; }
	// Whether any clip is converted from another rate or speed.
	bool IsResampled() const;
	Sequence::Resampling GetResampling() const { return mResampling; }
	// Each sample of the output is one of an input or zero.
	bool KeepsSamples() const;

private:
	void ChooseSampleRate(ClipRenderRequest const& inRequest);
	void ChooseLayouts(LayoutRequest const& inRequest);
	void ChooseReadingSpeed(PlannedClip& ioClip, double inSpeed) const;
	void PlaceClips(ClipRenderRequest const& inRequest);

	std::vector<PlannedClip> mClips;
	int mSampleRate = 0;
	std::int64_t mFrames = 0;
	Fades mFades;
	float mGain = 1.0f;
	double mSpeed = 1.0;
	bool mKeepsPitch = false;
	double mSemitones = 0.0;
	Sequence::Resampling mResampling;
	bool mIsReversed = false;
	std::optional<Listener> mListener;
};

} // namespace SonaroHost
