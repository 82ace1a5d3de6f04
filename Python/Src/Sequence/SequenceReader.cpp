#include "SequenceReader.h"

#include "Sequence/ChainReader.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"

#include <string>
#include <utility>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace SonaroPython
{

using namespace SonaroHost;

namespace
{

using SequenceList = std::vector<std::shared_ptr<Sequence::Description const>>;

SN::TickTime ReadTime(py::handle const& inTicks)
{
	return SN::TickTime::FromTicks(inTicks.cast<std::int64_t>());
}

SN::AudioChannelLayout ReadLayout(py::handle const& inName)
{
	auto const name = inName.cast<std::string>();
	auto layout = ParseLayout(name);
	if (!layout)
	{
		Refuse("layout: '" + name +
			   "' is not a layout; use mono, stereo, 5.1, ambisonic1 or a number of channels from 1 to 64");
	}
	return *std::move(layout);
}

Ratio ReadRatio(py::handle const& inFraction)
{
	auto const [numerator, denominator] = inFraction.cast<std::pair<std::int64_t, std::int64_t>>();
	return {numerator, denominator};
}

// Reads one sequence. Those that it nests, and its media, are known.
class Reader
{
public:
	Reader(SequenceList const& inKnown, MediaList const& inMedia, double inSampleRate)
		: mKnown(inKnown),
		  mMedia(inMedia),
		  mSampleRate(inSampleRate)
	{
	}

	Sequence::Description Read(py::dict const& inSequence) const
	{
		Sequence::Description sequence;
		sequence.mName = inSequence["name"].cast<std::string>();
		sequence.mLayout = ReadLayout(inSequence["layout"]);
		for (py::handle const& track : inSequence["tracks"])
		{
			sequence.mTracks.push_back(ReadTrack(py::reinterpret_borrow<py::dict>(track)));
		}
		for (py::handle const& submix : inSequence["submixes"])
		{
			sequence.mSubmixes.push_back(ReadBus<Sequence::Submix>(py::reinterpret_borrow<py::dict>(submix)));
		}
		sequence.mMaster = ReadChain(inSequence, mSampleRate, sequence.mLayout.size());
		if (!inSequence["mixdown"].is_none())
		{
			sequence.mMixdown =
				static_cast<SN::AudioChannelMix::MixdownType51>(inSequence["mixdown"].cast<int>());
		}
		return sequence;
	}

private:
	// What tracks and submixes have alike.
	template <class Bus>
	Bus ReadBus(py::dict const& inBus) const
	{
		Bus bus;
		bus.mName = inBus["name"].cast<std::string>();
		bus.mLayout = ReadLayout(inBus["layout"]);
		bus.mChain = ReadChain(inBus, mSampleRate, bus.mLayout.size());
		if (inBus["mute"].cast<bool>())
		{
			bus.mMute = std::make_shared<zorvcore::threads::AtomicIntegral<int>>(1);
		}
		if (int const output = inBus["output"].cast<int>(); output >= 0)
		{
			bus.mOutput = {Sequence::Output::Kind::kSubmix, static_cast<std::size_t>(output)};
		}
		else if (output != -1)
		{
			bus.mOutput.mKind = Sequence::Output::Kind::kNone;
		}
		bus.mOrigin = inBus["origin"].cast<std::string>();
		return bus;
	}

	Sequence::Track ReadTrack(py::dict const& inTrack) const
	{
		auto track = ReadBus<Sequence::Track>(inTrack);
		for (py::handle const& item : inTrack["items"])
		{
			track.mItems.push_back(ReadItem(py::reinterpret_borrow<py::dict>(item), track.mLayout.size()));
		}
		for (py::handle const& crossfade : inTrack["crossfades"])
		{
			auto const parts = py::reinterpret_borrow<py::tuple>(crossfade);
			track.mCrossfades.push_back({parts[0].cast<std::size_t>(), ReadTime(parts[1]), ReadTime(parts[2]),
				static_cast<FadeShape>(parts[3].cast<int>()), static_cast<FadeShape>(parts[4].cast<int>())});
		}
		return track;
	}

	Sequence::Item ReadItem(py::dict const& inItem, std::size_t inChannels) const
	{
		Sequence::Item item;
		item.mName = inItem["name"].cast<std::string>();
		item.mOrigin = inItem["origin"].cast<std::string>();
		item.mStart = ReadTime(inItem["start"]);
		item.mEnd = ReadTime(inItem["end"]);
		ReadContent(py::reinterpret_borrow<py::dict>(inItem["content"]), item);
		ReadSpeed(inItem["speed"], item);
		item.mResampling = static_cast<Sequence::Resampling>(inItem["resampling"].cast<int>());
		item.mChain = ReadChain(inItem, mSampleRate, inChannels);
		item.mFadeIn = ReadFade(inItem["fade_in"]);
		item.mFadeOut = ReadFade(inItem["fade_out"]);
		return item;
	}

	void ReadContent(py::dict const& inContent, Sequence::Item& outItem) const
	{
		auto const kind = inContent["kind"].cast<std::string>();
		if (kind == "clip")
		{
			outItem.mContent = Sequence::Clip{mMedia.at(inContent["media"].cast<std::size_t>()),
				inContent["first"].cast<std::int64_t>(), inContent["channels"].cast<std::vector<unsigned>>()};
			outItem.mOffset = ReadRatio(inContent["offset"]);
			return;
		}
		if (kind == "nest")
		{
			outItem.mContent = Sequence::Nest{
				mKnown.at(inContent["sequence"].cast<std::size_t>()), ReadTime(inContent["start"])};
			return;
		}
		outItem.mContent = ReadMulticam(inContent);
	}

	Sequence::Multicam ReadMulticam(py::dict const& inContent) const
	{
		Sequence::Multicam multicam;
		for (std::size_t const angle : inContent["angles"].cast<std::vector<std::size_t>>())
		{
			multicam.mAngles.push_back(mKnown.at(angle));
		}
		multicam.mStart = ReadTime(inContent["start"]);
		multicam.mFirstAngle = inContent["first"].cast<std::size_t>();
		for (py::handle const& cut : inContent["cuts"])
		{
			auto const parts = py::reinterpret_borrow<py::tuple>(cut);
			multicam.mCuts.push_back({ReadTime(parts[0]), parts[1].cast<std::size_t>(), ReadFade(parts[2])});
		}
		return multicam;
	}

	// A number, or the keys of a curve.
	static void ReadSpeed(py::handle const& inSpeed, Sequence::Item& outItem)
	{
		if (py::isinstance<py::float_>(inSpeed))
		{
			outItem.mSpeed = inSpeed.cast<double>();
			return;
		}
		std::vector<SpeedKey> keys;
		for (py::handle const& key : inSpeed)
		{
			auto const parts = py::reinterpret_borrow<py::tuple>(key);
			keys.push_back(
				{ReadRatio(parts[0]), ReadRatio(parts[1]), static_cast<Interpolation>(parts[2].cast<int>())});
		}
		outItem.mSpeedCurve = std::make_shared<SpeedCurve const>(std::move(keys));
	}

	SequenceList const& mKnown;
	MediaList const& mMedia;
	double mSampleRate;
};

} // namespace

std::shared_ptr<Sequence::Description const> ReadSequences(
	py::list const& inSequences, MediaList const& inMedia, double inSampleRate)
{
	SequenceList known;
	for (py::handle const& sequence : inSequences)
	{
		known.push_back(std::make_shared<Sequence::Description const>(
			Reader(known, inMedia, inSampleRate).Read(py::reinterpret_borrow<py::dict>(sequence))));
	}
	return known.back();
}

} // namespace SonaroPython
