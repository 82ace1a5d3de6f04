#pragma once

extern "C"
{
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

#include <memory>

namespace SonaroHost
{

// Owners of what libav allocates.
struct LibavDeleter
{
	void operator()(AVCodecContext* inContext) const { avcodec_free_context(&inContext); }
	void operator()(AVFormatContext* inContext) const { avformat_close_input(&inContext); }
	void operator()(AVFrame* inFrame) const { av_frame_free(&inFrame); }
	void operator()(AVPacket* inPacket) const { av_packet_free(&inPacket); }
	void operator()(SwrContext* inContext) const { swr_free(&inContext); }
	void operator()(AVIOContext* inContext) const
	{
		av_freep(&inContext->buffer);
		avio_context_free(&inContext);
	}
};

template <class Object>
using LibavPointer = std::unique_ptr<Object, LibavDeleter>;

} // namespace SonaroHost
