#include "ResamplerSubject.h"

#include "SonaroHost/Media/RateConverter.h"

#include <cstdint>

namespace SonaroDocuments
{

namespace
{

using namespace SN::Testing;
using SonaroHost::RateConverter;
using SonaroHost::RateQuality;
using SonaroHost::Ratio;

ResamplerSubject MakeEngines(ResamplerKind inKind)
{
	auto const convert =
		[inKind](std::vector<Signal> const& inInputs, unsigned inFrom, unsigned inTo, unsigned inCount)
	{
		auto const resampler =
			MakeResampler(inKind, RatePair(inFrom, inTo), static_cast<unsigned>(inInputs.size()));
		return PullChannelsThrough(*resampler, inInputs, inCount);
	};
	// The sinc resamplers stand one input sample ahead.
	return {GetName(inKind), convert, inKind >= ResamplerKind::kSinc ? 1.0 : 0.0};
}

// The input is silent in front of its first sample and after its last one.
Signal Convert(RateConverter const& inConverter, Signal const& inInput, unsigned inCount)
{
	auto const [first, end] = inConverter.GetInput(0, inCount);
	Signal input(static_cast<std::size_t>(end - first));
	for (std::int64_t frame = first; frame < end; ++frame)
	{
		bool const isInside = frame >= 0 && frame < static_cast<std::int64_t>(inInput.size());
		input[static_cast<std::size_t>(frame - first)] =
			isInside ? inInput[static_cast<std::size_t>(frame)] : 0.0f;
	}
	Signal output(inCount);
	RateConverter::Channel const channel{input.data(), output.data()};
	inConverter.Convert(0, inCount, {&channel, 1});
	return output;
}

ResamplerSubject MakeHosts(char const* inName, RateQuality inQuality)
{
	return {inName,
		[inQuality](std::vector<Signal> const& inInputs, unsigned inFrom, unsigned inTo, unsigned inCount)
		{
			RateConverter const converter(Ratio(inFrom, inTo), {}, inQuality);
			std::vector<Signal> outputs;
			for (Signal const& input : inInputs)
			{
				outputs.push_back(Convert(converter, input, inCount));
			}
			return outputs;
		}};
}

} // namespace

std::vector<ResamplerSubject> ListResamplers()
{
	std::vector<ResamplerSubject> subjects;
	for (ResamplerKind const kind : kAllResamplers)
	{
		subjects.push_back(MakeEngines(kind));
	}
	subjects.push_back(MakeHosts("draft", RateQuality::kDraft));
	subjects.push_back(MakeHosts("exact", RateQuality::kFull));
	return subjects;
}

} // namespace SonaroDocuments
