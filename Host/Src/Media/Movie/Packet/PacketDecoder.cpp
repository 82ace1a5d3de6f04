#include "PacketDecoder.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>

namespace SonaroHost
{

namespace
{

// Silence in place of a packet is for what is damaged.
void CheckMemory(int inError)
{
	if (inError == AVERROR(ENOMEM))
	{
		throw std::bad_alloc();
	}
}

} // namespace

PacketDecoder::PacketDecoder(AVStream const& inStream)
	: mChannels(static_cast<unsigned>(inStream.codecpar->ch_layout.nb_channels)),
	  mSampleRate(inStream.codecpar->sample_rate),
	  mFrame(Own(Libav().av_frame_alloc()))
{
	AVCodec const* const codec = Libav().avcodec_find_decoder(inStream.codecpar->codec_id);
	mCodec.reset(codec ? Libav().avcodec_alloc_context3(codec) : nullptr);
	if (!mCodec)
	{
		throw std::runtime_error(
			"there is no decoder for " + std::string(Libav().avcodec_get_name(inStream.codecpar->codec_id)));
	}
	Libav().avcodec_parameters_to_context(mCodec.get(), inStream.codecpar);
	mCodec->pkt_timebase = inStream.time_base;
	mCodec->thread_count = 1;
	// What is trimmed is worked out from the packets.
	mCodec->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
	// A damaged packet is to be silence, not what a decoder makes of it.
	mCodec->err_recognition = AV_EF_CRCCHECK | AV_EF_EXPLODE;
	if (Libav().avcodec_open2(mCodec.get(), codec, nullptr) < 0)
	{
		throw std::runtime_error("the decoder for " + std::string(codec->name) + " refuses it");
	}
}

PacketDecoder::Result PacketDecoder::Decode(AVPacket const* inPacket)
{
	mFrames = 0;
	bool isDamaged = inPacket && (inPacket->flags & AV_PKT_FLAG_CORRUPT) != 0;
	int error = Libav().avcodec_send_packet(mCodec.get(), inPacket);
	CheckMemory(error);
	isDamaged = isDamaged || (error < 0 && error != AVERROR_EOF);
	while (error >= 0)
	{
		error = Libav().avcodec_receive_frame(mCodec.get(), mFrame.get());
		CheckMemory(error);
		if (error >= 0)
		{
			isDamaged = !Append(*mFrame) || isDamaged;
		}
		else if (error != AVERROR(EAGAIN) && error != AVERROR_EOF)
		{
			// The rest of the packet may be in order; a decoder takes no more of it once it asks for the next one.
			isDamaged = true;
			error = 0;
		}
		Libav().av_frame_unref(mFrame.get());
	}
	return {mSamples.data(), mFrames, isDamaged};
}

bool PacketDecoder::Append(AVFrame const& inFrame)
{
	if (inFrame.ch_layout.nb_channels != static_cast<int>(mChannels) || inFrame.sample_rate != mSampleRate ||
		inFrame.nb_samples <= 0)
	{
		return false;
	}
	if (inFrame.format != mConvertedFormat)
	{
		// Channels stay as they are; what they are called is the business of whoever reads.
		AVChannelLayout layout{};
		layout.order = AV_CHANNEL_ORDER_UNSPEC;
		layout.nb_channels = static_cast<int>(mChannels);
		SwrContext* converter = nullptr;
		int const error = Libav().swr_alloc_set_opts2(&converter, &layout, AV_SAMPLE_FMT_FLT, mSampleRate,
			&layout, static_cast<AVSampleFormat>(inFrame.format), mSampleRate, 0, nullptr);
		mConverter.reset(converter);
		CheckMemory(error);
		if (error < 0 || Libav().swr_init(converter) < 0)
		{
			return false;
		}
		mConvertedFormat = inFrame.format;
	}
	std::size_t const place = static_cast<std::size_t>(mFrames) * mChannels;
	std::size_t const needed = place + static_cast<std::size_t>(inFrame.nb_samples) * mChannels;
	mSamples.resize(std::max(mSamples.size(), needed));
	auto* out = reinterpret_cast<std::uint8_t*>(mSamples.data() + place);
	int const count = Libav().swr_convert(mConverter.get(), &out, inFrame.nb_samples,
		const_cast<std::uint8_t const**>(inFrame.extended_data), inFrame.nb_samples);
	mFrames += std::max(count, 0);
	return count == inFrame.nb_samples;
}

} // namespace SonaroHost
