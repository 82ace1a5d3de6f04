#include "WaveformData.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace SonaroHost
{

namespace
{

// Bytes that are gathered before they are handed on.
constexpr std::size_t kTextPiece = 65536;

int Quantize(float inSample, int inBits)
{
	float const fullScale = static_cast<float>(1 << (inBits - 1));
	float const scaled = std::isnan(inSample) ? 0.0f : inSample * fullScale;
	return static_cast<int>(std::lround(std::clamp(scaled, -fullScale, fullScale - 1.0f)));
}

// Hands all values to inAppend(text, value) in their order, and the text to the sink.
template <class Append>
void WriteValues(
	Waveform const& inWaveform, int inBits, ByteSink const& inSink, std::string ioText, Append&& inAppend)
{
	auto const flush = [&]
	{
		inSink(ioText);
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
		if (ioText.size() >= kTextPiece)
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

constexpr std::uint32_t kDatVersion = 2;
constexpr std::size_t kDatFields = 6;
constexpr std::size_t kDatHeadBytes = 4 * kDatFields;

std::uint32_t ReadLittleEndian(std::string_view inBytes, std::size_t inOffset, std::size_t inCount)
{
	std::uint32_t value = 0;
	for (std::size_t i = inCount; i-- > 0;)
	{
		value = value << 8 | static_cast<unsigned char>(inBytes[inOffset + i]);
	}
	return value;
}

} // namespace

void WriteWaveformJson(Waveform const& inWaveform, int inBits, ByteSink const& inSink)
{
	std::string const head = "{\"version\":2,\"channels\":" + std::to_string(inWaveform.mChannels.size()) +
							 ",\"sample_rate\":" + std::to_string(inWaveform.mSampleRate) +
							 ",\"samples_per_pixel\":" + std::to_string(inWaveform.mSamplesPerColumn) +
							 ",\"bits\":" + std::to_string(inBits) +
							 ",\"length\":" + std::to_string(inWaveform.GetNumColumns()) + ",\"data\":[";
	char const* separator = "";
	WriteValues(inWaveform, inBits, inSink, head,
		[&separator](std::string& ioText, int inValue)
		{
			ioText += separator;
			ioText += std::to_string(inValue);
			separator = ",";
		});
	inSink("]}\n");
}

void WriteWaveformDat(Waveform const& inWaveform, int inBits, ByteSink const& inSink)
{
	constexpr std::uint32_t kFlag8Bits = 1;
	std::string head;
	for (std::uint32_t const field :
		{kDatVersion, inBits == 8 ? kFlag8Bits : 0u, static_cast<std::uint32_t>(inWaveform.mSampleRate),
			static_cast<std::uint32_t>(inWaveform.mSamplesPerColumn),
			static_cast<std::uint32_t>(inWaveform.GetNumColumns()),
			static_cast<std::uint32_t>(inWaveform.mChannels.size())})
	{
		AppendLittleEndian(head, field, 4);
	}
	WriteValues(inWaveform, inBits, inSink, head,
		[inBits](std::string& ioText, int inValue)
		{ AppendLittleEndian(ioText, static_cast<std::uint32_t>(inValue), inBits / 8); });
}

std::optional<Waveform> ReadWaveformDat(std::string_view inBytes)
{
	constexpr float kFullScale = 32768.0f;
	constexpr std::size_t kColumnBytes = 4;
	if (inBytes.size() < kDatHeadBytes)
	{
		return std::nullopt;
	}
	std::array<std::uint32_t, kDatFields> head{};
	for (std::size_t i = 0; i < kDatFields; ++i)
	{
		head[i] = ReadLittleEndian(inBytes, 4 * i, 4);
	}
	auto const [version, flags, rate, interval, columns, channels] = head;
	if (version != kDatVersion || flags != 0 || interval == 0 ||
		(inBytes.size() - kDatHeadBytes) != std::size_t{columns} * channels * kColumnBytes)
	{
		return std::nullopt;
	}
	Waveform waveform{static_cast<int>(rate), interval, {}};
	waveform.mChannels.assign(channels, std::vector<float>(columns * Waveform::kValuesPerColumn));
	std::size_t offset = kDatHeadBytes;
	auto const take = [&]
	{
		auto const value = static_cast<std::int16_t>(ReadLittleEndian(inBytes, offset, 2));
		offset += 2;
		return static_cast<float>(value) / kFullScale;
	};
	for (std::size_t column = 0; column < columns; ++column)
	{
		for (std::vector<float>& channel : waveform.mChannels)
		{
			channel[column * Waveform::kValuesPerColumn] = take();
			channel[column * Waveform::kValuesPerColumn + 1] = take();
		}
	}
	return waveform;
}

} // namespace SonaroHost
