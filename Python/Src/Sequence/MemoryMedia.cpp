#include "MemoryMedia.h"

#include "Sonaro/IAudioSource.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/PrintableText.h"
#include "zorvcore/classref/Implements.h"
#include "zorvcore/classref/InterfaceRef.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace py = pybind11;

namespace SonaroPython
{

namespace
{

using namespace SonaroHost;

// Fills so many frames of all channels, all of them within the recording. False where that failed.
using Filler = std::function<bool(
	std::int64_t inFirst, std::int64_t inFrames, dsp::AudioBuffer& outBuffer, unsigned inTarget)>;

class MemorySource final : public SN::Implements<MemorySource, SN::IAudioSource>
{
public:
	static constexpr SN::Identifier<MemorySource> kIdentifier{0x7be3105dc2a94f86ull, 0x91c4e85f3b0d762aull};

	MemorySource(MediaFacts const& inFacts, SN::AudioChannelLayout inLayout, Filler inFiller,
		SN::FrameRate const& inCountingRate)
		: mFacts(inFacts),
		  mLayout(std::move(inLayout)),
		  mFiller(std::move(inFiller)),
		  mFrameRate(inCountingRate)
	{
	}

	SN::FrameRate GetFrameRate() override { return mFrameRate; }
	SN::TickTime GetLength() override { return {mFacts.mFrames, mFrameRate}; }
	unsigned GetNumChannels() SONARO_NONBLOCKING override { return static_cast<unsigned>(mLayout.size()); }
	SN::AudioChannelLayout GetAudioChannelLayout() override { return mLayout; }
	SN::ImmutableString GetName() override { return SN::ImmutableString(mFacts.mName.c_str()); }

	void ReadAudio(
		VX::BinaryData const&, dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime, bool) override
	{
		std::int64_t const first = inTime.ToFrame64(mFrameRate);
		std::int64_t const inside = std::clamp<std::int64_t>(first, 0, mFacts.mFrames);
		std::int64_t const end =
			std::clamp<std::int64_t>(first + inBuffer.GetUseSize(), inside, mFacts.mFrames);
		auto const target = static_cast<unsigned>(inside - first);
		if (inside == end || !mFiller(inside, end - inside, inBuffer, target))
		{
			inBuffer.Zero();
			return;
		}
		auto const done = target + static_cast<unsigned>(end - inside);
		for (unsigned channel = 0; channel < inBuffer.GetNumChannels(); ++channel)
		{
			if (channel >= mLayout.size())
			{
				inBuffer.MarkChannelSilent(channel);
				continue;
			}
			float* const samples = inBuffer.GetChannel(channel);
			std::fill_n(samples, target, 0.0f);
			std::fill(samples + done, samples + inBuffer.GetUseSize(), 0.0f);
			inBuffer.NoteChannelWrite(channel, inBuffer.GetUseSize());
		}
	}

private:
	MediaFacts mFacts;
	SN::AudioChannelLayout mLayout;
	Filler mFiller;
	SN::FrameRate mFrameRate;
};

std::shared_ptr<Sequence::Media const> MakeMedia(MediaFacts const& inFacts, Filler inFiller)
{
	auto const layout = ParseLayout(inFacts.mLayout);
	if (!layout)
	{
		Refuse("layout: '" + inFacts.mLayout +
			   "' is not a layout; use mono, stereo, 5.1, ambisonic1 or a number of channels from 1 to 64");
	}
	auto const open = [facts = inFacts, layout = *layout, filler = std::move(inFiller)](
						  SN::FrameRate const& inCountingRate)
	{
		return SN::InterfaceRef<SN::IAudioSource>(
			zorvcore::classref::MakeObject<MemorySource>(facts, layout, filler, inCountingRate));
	};
	return std::make_shared<Sequence::Media>(
		Sequence::Media{inFacts.mName, inFacts.mSampleRate, inFacts.mFrames, *layout, open});
}

// Keeps an object of Python alive, from threads that do not hold the interpreter's lock.
std::shared_ptr<py::object> Hold(py::object const& inObject)
{
	return {new py::object(inObject), [](py::object* inHeld)
		{
			py::gil_scoped_acquire const acquire;
			delete inHeld;
		}};
}

// Samples of a function in a buffer. Throws what is wrong with them.
void Copy(SampleArray const& inSamples, std::int64_t inFrames, dsp::AudioBuffer& outBuffer, unsigned inTarget,
	std::size_t inChannels)
{
	if (inSamples.ndim() != 2 || inSamples.shape(0) != static_cast<py::ssize_t>(inChannels) ||
		inSamples.shape(1) != inFrames)
	{
		throw py::value_error("the function has to return samples of the shape (" +
							  std::to_string(inChannels) + ", " + std::to_string(inFrames) + ")");
	}
	for (std::size_t channel = 0; channel < std::min<std::size_t>(inChannels, outBuffer.GetNumChannels());
		 ++channel)
	{
		std::copy_n(inSamples.data() + static_cast<std::int64_t>(channel) * inFrames, inFrames,
			outBuffer.GetChannel(channel) + inTarget);
	}
}

} // namespace

void MediaFailures::Keep(
	std::string const& inMedia, std::string const& inReason, std::exception_ptr inException)
{
	std::lock_guard const lock(mMutex);
	if (!mError)
	{
		mError.emplace(HostError::Kind::kInput, "the media " + QuoteName(inMedia) + " failed: " + inReason);
		mException = std::move(inException);
	}
}

std::optional<HostError> MediaFailures::Find() const
{
	std::lock_guard const lock(mMutex);
	return mError;
}

std::exception_ptr MediaFailures::Take()
{
	std::lock_guard const lock(mMutex);
	mError.reset();
	return std::exchange(mException, nullptr);
}

std::shared_ptr<Sequence::Media const> MakeArrayMedia(SampleArray const& inSamples, MediaFacts const& inFacts)
{
	auto const held = Hold(inSamples);
	std::vector<float const*> const channels = GetChannels(inSamples);
	return MakeMedia(inFacts,
		[held, channels](
			std::int64_t inFirst, std::int64_t inFrames, dsp::AudioBuffer& outBuffer, unsigned inTarget)
		{
			for (std::size_t channel = 0;
				 channel < std::min<std::size_t>(channels.size(), outBuffer.GetNumChannels()); ++channel)
			{
				std::copy_n(channels[channel] + inFirst, inFrames, outBuffer.GetChannel(channel) + inTarget);
			}
			return true;
		});
}

std::shared_ptr<Sequence::Media const> MakeFunctionMedia(
	py::function const& inFunction, MediaFacts const& inFacts, std::shared_ptr<MediaFailures> inFailures)
{
	auto const layout = ParseLayout(inFacts.mLayout);
	return MakeMedia(inFacts,
		[function = Hold(inFunction), failures = std::move(inFailures), name = inFacts.mName,
			channels = layout ? layout->size() : 0](
			std::int64_t inFirst, std::int64_t inFrames, dsp::AudioBuffer& outBuffer, unsigned inTarget)
		{
			py::gil_scoped_acquire const acquire;
			try
			{
				Copy((*function)(inFirst, inFrames).cast<SampleArray>(), inFrames, outBuffer, inTarget,
					channels);
				return true;
			}
			catch (std::exception const& error)
			{
				failures->Keep(name, error.what(), std::current_exception());
				return false;
			}
		});
}

} // namespace SonaroPython
