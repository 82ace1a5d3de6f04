#include "WaveformData.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

namespace SonaroHost
{

namespace
{

// Bytes that are gathered before they go to the file.
constexpr std::size_t kPiece = 65536;

int Quantize(float inSample, int inBits)
{
	float const fullScale = static_cast<float>(1 << (inBits - 1));
	float const scaled = std::isnan(inSample) ? 0.0f : inSample * fullScale;
	return static_cast<int>(std::lround(std::clamp(scaled, -fullScale, fullScale - 1.0f)));
}

// Hands all values to inAppend(text, value) in their order, and the text to the file.
template <class Append>
void WriteValues(
	Waveform const& inWaveform, int inBits, OutputFile& ioFile, std::string ioText, Append&& inAppend)
{
	auto const flush = [&]
	{
		ioFile.Write(ioText.data(), static_cast<std::int64_t>(ioText.size()));
		ioText.clear();
	};
	for (std::size_t i = 0; i < inWaveform.GetNumColumns(); ++i)
	{
		for (std::size_t channel = 0; channel < inWaveform.mChannels.size(); ++channel)
		{
			Waveform::Column const column = inWaveform.GetColumn(channel, i);
			inAppend(ioText, Quantize(column.mMinimum, inBits));
			inAppend(ioText, Quantize(column.mMaximum, inBits));
		}
		if (ioText.size() >= kPiece)
		{
			flush();
		}
	}
	flush();
}

void AppendLittleEndian(std::string& ioText, std::uint32_t inValue, int inBytes)
{
	for (int i = 0; i < inBytes; ++i)
	{
		ioText += static_cast<char>(inValue >> 8 * i & 0xff);
	}
}

} // namespace

void WriteWaveformJson(Waveform const& inWaveform, int inBits, OutputFile& ioFile)
{
	std::string const head = "{\"version\":2,\"channels\":" + std::to_string(inWaveform.mChannels.size()) +
							 ",\"sample_rate\":" + std::to_string(inWaveform.mSampleRate) +
							 ",\"samples_per_pixel\":" + std::to_string(inWaveform.mSamplesPerColumn) +
							 ",\"bits\":" + std::to_string(inBits) +
							 ",\"length\":" + std::to_string(inWaveform.GetNumColumns()) + ",\"data\":[";
	char const* separator = "";
	WriteValues(inWaveform, inBits, ioFile, head,
		[&separator](std::string& ioText, int inValue)
		{
			ioText += separator;
			ioText += std::to_string(inValue);
			separator = ",";
		});
	ioFile.Write("]}\n", 3);
}

void WriteWaveformDat(Waveform const& inWaveform, int inBits, OutputFile& ioFile)
{
	constexpr std::uint32_t kVersion = 2;
	constexpr std::uint32_t kFlag8Bits = 1;
	std::string head;
	for (std::uint32_t const field :
		{kVersion, inBits == 8 ? kFlag8Bits : 0u, static_cast<std::uint32_t>(inWaveform.mSampleRate),
			static_cast<std::uint32_t>(inWaveform.mSamplesPerColumn),
			static_cast<std::uint32_t>(inWaveform.GetNumColumns()),
			static_cast<std::uint32_t>(inWaveform.mChannels.size())})
	{
		AppendLittleEndian(head, field, 4);
	}
	WriteValues(inWaveform, inBits, ioFile, head,
		[inBits](std::string& ioText, int inValue)
		{ AppendLittleEndian(ioText, static_cast<std::uint32_t>(inValue), inBits / 8); });
}

} // namespace SonaroHost
