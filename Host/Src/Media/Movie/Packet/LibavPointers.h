#pragma once

#include "Libav.h"

#include <memory>

namespace SonaroHost
{

// Owners of what libav allocates.
struct LibavDeleter
{
	void operator()(AVCodecContext* inContext) const { Libav().avcodec_free_context(&inContext); }
	void operator()(AVFormatContext* inContext) const { Libav().avformat_close_input(&inContext); }
	void operator()(AVFrame* inFrame) const { Libav().av_frame_free(&inFrame); }
	void operator()(AVPacket* inPacket) const { Libav().av_packet_free(&inPacket); }
	void operator()(SwrContext* inContext) const { Libav().swr_free(&inContext); }
	void operator()(AVIOContext* inContext) const
	{
		Libav().av_freep(&inContext->buffer);
		Libav().avio_context_free(&inContext);
	}
};

template <class Object>
using LibavPointer = std::unique_ptr<Object, LibavDeleter>;

} // namespace SonaroHost
