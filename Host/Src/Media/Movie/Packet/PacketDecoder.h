#pragma once

#include "Libav.h"

#include <cstdint>
#include <vector>

namespace SonaroHost
{

// Decodes the packets of one audio stream to interleaved floats. Nothing is trimmed.
class PacketDecoder
{
public:
	// Throws a std::runtime_error where there is no decoder.
	explicit PacketDecoder(AVStream const& inStream);

	// What a packet gives, valid until the next call; null for what is left at the end.
	struct Result
	{
		float const* mSamples = nullptr;
		std::int64_t mFrames = 0;
		bool mIsDamaged = false;
	};
	Result Decode(AVPacket const* inPacket);

	// After a seek.
	void Reset() { Libav().avcodec_flush_buffers(mCodec.get()); }

private:
	// Whether the frame is of the stream's format.
	bool Append(AVFrame const& inFrame);

	unsigned mChannels;
	int mSampleRate;
	LibavPointer<AVCodecContext> mCodec;
	LibavPointer<AVFrame> mFrame;
	LibavPointer<SwrContext> mConverter;
	int mConvertedFormat = AV_SAMPLE_FMT_NONE;
	std::vector<float> mSamples;
	std::int64_t mFrames = 0;
};

} // namespace SonaroHost
