#include "PluginFilter.h"

#include "SonaroHost/Base/EffectFault.h"
#include "SonaroHost/Base/FiniteSamples.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "World.h"
#include "zorvaccelerate/FiniteSamples.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace SonaroHost::Effects
{

namespace
{

// The length of the blocks of plugins that need a fixed one: a power of two, which is what most of these want.
constexpr unsigned kFixedFrames = 256;

// False where some of the samples are not finite.
bool CopyMean(float const* inLeft, float const* inRight, unsigned inCount, float* outSamples)
{
	for (unsigned i = 0; i < inCount; ++i)
	{
		outSamples[i] = 0.5f * (inLeft[i] + inRight[i]);
	}
	return zorvaccelerate::utility::AreFinite(inCount, outSamples);
}

// Raises the fault of the first frame that is not finite.
[[noreturn]] void RaiseNotFinite(dsp::AudioBuffer const& inBuffer, unsigned inFirst, unsigned inCount)
{
	std::size_t first = inCount;
	for (unsigned channel = 0; channel < inBuffer.GetNumChannels(); ++channel)
	{
		first = std::min(first, FindNotFinite(inBuffer.GetChannel(channel) + inFirst, inCount));
	}
	throw EffectFault(EffectFault::Kind::kNotANumber, inFirst + static_cast<unsigned>(first));
}

std::string DescribePorts(EffectDescription const& inDescription)
{
	return FormatCount(inDescription.mInputs, "audio input") + " and " +
		   FormatCount(inDescription.mOutputs, "audio output");
}

// What helps where ports and channels do not fit.
std::string SuggestFit(unsigned inInputs, unsigned inOutputs)
{
	return inInputs == inOutputs
			   ? "use it where the sound has " + FormatCount(inInputs, "channel") +
					 ", or a plugin with one input and one output, which runs for each channel"
			   : "use a plugin with as many inputs as outputs";
}

} // namespace

ChannelUse ChooseChannelUse(EffectDescription const& inDescription, unsigned inChannels)
{
	unsigned const inputs = inDescription.mInputs;
	unsigned const outputs = inDescription.mOutputs;
	if (inputs == 1 && outputs == 1)
	{
		return ChannelUse::kOneForEach;
	}
	if (inputs == inChannels && outputs == inChannels)
	{
		return ChannelUse::kDirect;
	}
	if (inputs == 2 && outputs == 2 && inChannels == 1)
	{
		return ChannelUse::kStereoOnMono;
	}
	Refuse("the plugin " + QuoteName(inDescription.mName) + " has " + DescribePorts(inDescription) +
		   ", which do not fit " + FormatCount(inChannels, "channel") + "; " + SuggestFit(inputs, outputs));
}

PluginFilter::PluginFilter(std::shared_ptr<PluginStart const> inStart, Terms const& inTerms)
	: mStart(std::move(inStart)),
	  mTerms(inTerms),
	  mUse(ChooseChannelUse(mStart->mData->mDescription, inTerms.mChannels)),
	  mFixedFrames(mStart->mData->mNeedsFixedBlocks ? kFixedFrames : 0),
	  mParameters(mStart->mValues.size() + 1)
{
	for (std::size_t i = 0; i < GetBypassIndex(); ++i)
	{
		mParameters[i].store(mStart->mValues[i], std::memory_order_relaxed);
	}
	mParameters[GetBypassIndex()].store(mStart->mIsBypassed ? 1.0f : 0.0f, std::memory_order_relaxed);
	MakeInstances();
	mLatency = std::max(mFixedFrames + MeasureLatency(), mStart->mFoundLatency->load());
	mFoundLatency = mLatency;
	MakeAligned();
}

void PluginFilter::MakeAligned()
{
	bool const isLate = mLatency > 0 && mStart->mData->mDescription.mReportsLatency;
	if (isLate || mStart->mHasBypass)
	{
		mAligned.emplace(
			AlignedSound::Terms{mTerms.mChannels, mLatency, GetLongestRun(), mTerms.mSampleRate});
	}
	if (mLatency > 0 && mStart->mData->mEnabled)
	{
		mEnabled.emplace(mLatency, GetLongestRun());
	}
}

unsigned PluginFilter::GetLongestRun() const
{
	return mFixedFrames > 0 ? mFixedFrames : std::max(mTerms.mMaxFrames, 1u);
}

void PluginFilter::MakeInstances()
{
	World::Lock const lock;
	mInstances.clear();
	mInputs.clear();
	mOutputs.clear();
	unsigned const count = mUse == ChannelUse::kOneForEach ? mTerms.mChannels : 1;
	unsigned const ports = mUse == ChannelUse::kOneForEach ? 1 : mStart->mData->mDescription.mInputs;
	for (unsigned i = 0; i < count; ++i)
	{
		PluginInstance& instance = *mInstances.emplace_back(MakeInstance());
		for (unsigned port = 0; port < ports; ++port)
		{
			mInputs.push_back({&instance, port});
			mOutputs.push_back(instance.GetOutput(port));
		}
	}
	UpdateControls(true);
}

std::unique_ptr<PluginInstance> PluginFilter::MakeInstance() const
{
	auto instance = std::make_unique<PluginInstance>(
		mStart->mData, PluginFeatures::Settings{mTerms.mSampleRate, mFixedFrames > 0 ? mFixedFrames : 1,
						   GetLongestRun(), mTerms.mIsRealTime, mFixedFrames > 0});
	for (auto const& state : mStart->mStates)
	{
		instance->Restore(state.get());
	}
	for (std::size_t control = 0; control < mStart->mIsSet.size(); ++control)
	{
		if (mStart->mIsSet[control])
		{
			instance->ForgetParameter(control);
		}
	}
	for (auto const& [index, text] : mStart->mTexts)
	{
		instance->SetText(index, text);
	}
	return instance;
}

// Plugins state their latency while they run. One that has run remembers it, so another instance is asked.
unsigned PluginFilter::MeasureLatency() const
{
	if (!mStart->mData->mDescription.mReportsLatency)
	{
		return 0;
	}
	World::Lock const lock;
	auto const probe = MakeInstance();
	for (std::size_t i = 0; i < GetBypassIndex(); ++i)
	{
		probe->SetControl(i, mParameters[i].load(std::memory_order_relaxed));
	}
	probe->Activate();
	probe->Probe(GetLongestRun());
	return probe->GetLatency();
}

void PluginFilter::SetParameter(unsigned inIndex, float inValue)
{
	if (inIndex < mParameters.size())
	{
		mParameters[inIndex].store(inValue, std::memory_order_relaxed);
		mIsEdited.store(true, std::memory_order_release);
	}
}

float PluginFilter::GetParameter(unsigned inIndex)
{
	return inIndex < mParameters.size() ? mParameters[inIndex].load(std::memory_order_relaxed) : 0.0f;
}

void PluginFilter::GetParameterText(std::u16string& outText, unsigned inIndex)
{
	outText.clear();
	if (inIndex == GetBypassIndex())
	{
		outText = GetParameter(inIndex) > 0.0f ? u"bypassed" : u"heard";
	}
	else if (inIndex < mParameters.size())
	{
		Control const& control = mStart->mData->mDescription.mControls[inIndex];
		float const value = GetParameter(inIndex);
		auto const named = std::ranges::find(control.mScalePoints, value, &ScalePoint::mValue);
		std::string const text = named != control.mScalePoints.end()
									 ? named->mLabel
									 : FormatNumber(static_cast<double>(value)) +
										   (control.mUnit.empty() ? "" : " " + control.mUnit);
		outText = std::u16string(text.begin(), text.end());
	}
}

void PluginFilter::Clone(SN::InterfaceRef<SN::IAudioFilter>& outFilter, bool inRealTime)
{
	auto start = std::make_shared<PluginStart>(*mStart);
	for (unsigned i = 0; i < GetBypassIndex(); ++i)
	{
		start->mValues[i] = GetParameter(i);
	}
	start->mIsBypassed = GetParameter(static_cast<unsigned>(GetBypassIndex())) > 0.0f;
	Terms terms = mTerms;
	terms.mIsRealTime = inRealTime;
	outFilter = zorvcore::classref::MakeObject<PluginFilter>(std::move(start), terms);
}

void PluginFilter::Initialize(
	bool inRealTime, unsigned inMaxFrames, SN::FrameRate const& inFrameRate, unsigned inChannels)
{
	Terms const terms{inFrameRate.GetSamplesPerSecond(), inMaxFrames, inChannels, inRealTime};
	if (!(terms == mTerms))
	{
		mUse = ChooseChannelUse(mStart->mData->mDescription, inChannels);
		mTerms = terms;
		MakeInstances();
		MakeAligned();
	}
	if (mAligned)
	{
		mAligned->Reset();
	}
	if (mEnabled)
	{
		mEnabled->Reset();
	}
	mFilled = 0;
	UpdateControls(true);
	mRunLatency = mLatency;
	for (auto const& instance : mInstances)
	{
		instance->Activate();
		if (!mStart->mTexts.empty() && mFixedFrames == 0)
		{
			instance->TakeMessages();
		}
	}
	for (unsigned i = 0; i < mOutputs.size() && mFixedFrames > 0; ++i)
	{
		std::fill_n(const_cast<float*>(mOutputs[i]), mFixedFrames, 0.0f);
	}
}

void PluginFilter::Shutdown()
{
	for (auto const& instance : mInstances)
	{
		instance->Deactivate();
	}
}

void PluginFilter::UpdateControls(bool inAll)
{
	if (!mIsEdited.exchange(false, std::memory_order_acquire) && !inAll)
	{
		return;
	}
	if (mAligned)
	{
		mAligned->SetBypass(mParameters[GetBypassIndex()].load(std::memory_order_relaxed) > 0.0f);
	}
	for (std::size_t i = 0; i < GetBypassIndex(); ++i)
	{
		if (!mEnabled || i != mStart->mData->mEnabled || inAll)
		{
			SetControl(i, mParameters[i].load(std::memory_order_relaxed));
		}
	}
}

void PluginFilter::SetControl(std::size_t inIndex, float inValue)
{
	for (auto const& instance : mInstances)
	{
		instance->SetControl(inIndex, inValue, mFilled);
	}
}

// A plugin switches what it gives out, which belongs to frames that went in before.
unsigned PluginFilter::SetEnabled(unsigned inCount)
{
	if (!mEnabled)
	{
		return inCount;
	}
	std::size_t const index = *mStart->mData->mEnabled;
	mEnabled->Mark(mParameters[index].load(std::memory_order_relaxed) > 0.0f, inCount);
	unsigned const count = mFixedFrames > 0 ? inCount : mEnabled->CountSame(mRunLatency, inCount);
	// A block of a fixed length runs once it is filled, and is switched as a whole.
	unsigned const passed = mFixedFrames > 0 ? count : 0;
	SetControl(index, mEnabled->IsOn(passed, mRunLatency) ? 1.0f : 0.0f);
	mEnabled->Advance(count);
	return count;
}

void PluginFilter::Process(dsp::AudioBuffer& ioBuffer, SN::TickTime, bool)
{
	unsigned const frames = ioBuffer.GetUseSize();
	FillSilence(ioBuffer);
	for (unsigned done = 0; done < frames;)
	{
		UpdateControls(false);
		unsigned const count = SetEnabled(std::min(frames - done, GetLongestRun() - mFilled));
		if (mAligned)
		{
			mAligned->TakeInput(ioBuffer, done, count);
		}
		Read(ioBuffer, done, count);
		if (mFixedFrames == 0)
		{
			RunInstances(count);
		}
		Write(ioBuffer, done, count);
		if (mAligned)
		{
			mAligned->TakeOutput(ioBuffer, done, count, mRunLatency);
		}
		mFilled += mFixedFrames > 0 ? count : 0;
		if (mFixedFrames > 0 && mFilled == mFixedFrames)
		{
			mFilled = 0;
			RunInstances(mFixedFrames);
		}
		done += count;
	}
}

// What a flag silences becomes zeros, which all are samples from then on.
void PluginFilter::FillSilence(dsp::AudioBuffer& ioBuffer) const
{
	for (unsigned channel = 0; channel < mTerms.mChannels; ++channel)
	{
		if (ioBuffer.IsChannelSilent(channel))
		{
			std::fill_n(ioBuffer.GetChannel(channel), ioBuffer.GetUseSize(), 0.0f);
			ioBuffer.NoteChannelWrite(channel, ioBuffer.GetUseSize());
		}
	}
}

void PluginFilter::Read(dsp::AudioBuffer& inBuffer, unsigned inFirst, unsigned inCount)
{
	for (unsigned i = 0; i < mInputs.size(); ++i)
	{
		float* const samples = inBuffer.GetChannel(mUse == ChannelUse::kStereoOnMono ? 0 : i) + inFirst;
		if (mFixedFrames == 0)
		{
			mInputs[i].mInstance->ConnectInput(mInputs[i].mIndex, samples);
		}
		else
		{
			std::copy_n(samples, inCount, mInputs[i].mInstance->GetInput(mInputs[i].mIndex) + mFilled);
		}
	}
}

void PluginFilter::Write(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount) const
{
	bool isFinite = true;
	if (mUse == ChannelUse::kStereoOnMono)
	{
		isFinite =
			CopyMean(mOutputs[0] + mFilled, mOutputs[1] + mFilled, inCount, ioBuffer.GetChannel(0) + inFirst);
	}
	else
	{
		for (unsigned channel = 0; channel < mOutputs.size(); ++channel)
		{
			isFinite &= zorvaccelerate::utility::CopyAndTestFinite(
				inCount, mOutputs[channel] + mFilled, ioBuffer.GetChannel(channel) + inFirst);
		}
	}
	if (!isFinite)
	{
		RaiseNotFinite(ioBuffer, inFirst, inCount);
	}
}

void PluginFilter::RunInstances(unsigned inFrames)
{
	for (auto const& instance : mInstances)
	{
		instance->Run(inFrames);
	}
	NoteLatency();
}

void PluginFilter::NoteLatency()
{
	if (!mStart->mData->mDescription.mReportsLatency)
	{
		return;
	}
	// Instances at the same settings state the same one.
	mRunLatency = mFixedFrames + mInstances.front()->GetLatency();
	if (mRunLatency > mFoundLatency)
	{
		mFoundLatency = mRunLatency;
		mStart->mFoundLatency->store(mRunLatency, std::memory_order_relaxed);
	}
}

} // namespace SonaroHost::Effects
