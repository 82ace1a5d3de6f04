#pragma once

extern "C"
{
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/timecode.h>
#include <libswresample/swresample.h>
}

#include <memory>
#include <new>
#include <string>

namespace SonaroHost
{

// Each function of libav that is called, once.
#define SONARO_LIBAV_FUNCTIONS(X)                                                                            \
	X(av_channel_layout_channel_from_index)                                                                  \
	X(av_compare_ts)                                                                                         \
	X(av_dict_free)                                                                                          \
	X(av_dict_get)                                                                                           \
	X(av_dict_set)                                                                                           \
	X(av_frame_alloc)                                                                                        \
	X(av_frame_free)                                                                                         \
	X(av_frame_unref)                                                                                        \
	X(av_freep)                                                                                              \
	X(av_get_audio_frame_duration2)                                                                          \
	X(av_get_exact_bits_per_sample)                                                                          \
	X(av_get_time_base_q)                                                                                    \
	X(av_log_set_level)                                                                                      \
	X(av_malloc)                                                                                             \
	X(av_packet_alloc)                                                                                       \
	X(av_packet_free)                                                                                        \
	X(av_packet_get_side_data)                                                                               \
	X(av_packet_unref)                                                                                       \
	X(av_probe_input_buffer2)                                                                                \
	X(av_read_frame)                                                                                         \
	X(av_rescale)                                                                                            \
	X(av_rescale_q)                                                                                          \
	X(av_seek_frame)                                                                                         \
	X(av_strdup)                                                                                             \
	X(av_strerror)                                                                                           \
	X(av_timecode_init_from_string)                                                                          \
	X(avcodec_alloc_context3)                                                                                \
	X(avcodec_descriptor_get)                                                                                \
	X(avcodec_find_decoder)                                                                                  \
	X(avcodec_flush_buffers)                                                                                 \
	X(avcodec_free_context)                                                                                  \
	X(avcodec_get_name)                                                                                      \
	X(avcodec_open2)                                                                                         \
	X(avcodec_parameters_to_context)                                                                         \
	X(avcodec_receive_frame)                                                                                 \
	X(avcodec_send_packet)                                                                                   \
	X(avcodec_version)                                                                                       \
	X(avformat_alloc_context)                                                                                \
	X(avformat_close_input)                                                                                  \
	X(avformat_find_stream_info)                                                                             \
	X(avformat_open_input)                                                                                   \
	X(avformat_version)                                                                                      \
	X(avio_alloc_context)                                                                                    \
	X(avio_context_free)                                                                                     \
	X(swr_alloc_set_opts2)                                                                                   \
	X(swr_convert)                                                                                           \
	X(swr_free)                                                                                              \
	X(swr_init)                                                                                              \
	X(swresample_version)

// libav is loaded at the first movie instead of being linked: it brings about a hundred libraries along, which
// take 45 milliseconds of processor time to load.
// Threads: any.
struct LibavFunctions
{
// NOLINTNEXTLINE(bugprone-macro-parentheses): the name of a member stands without.
#define SONARO_LIBAV_MEMBER(name) decltype(&::name) name = nullptr;
	SONARO_LIBAV_FUNCTIONS(SONARO_LIBAV_MEMBER)
#undef SONARO_LIBAV_MEMBER
};

// Why libav cannot be used, such as a library that is not installed; empty when it can. Loads it.
std::string const& FindLibavFault();

// The functions, of use where there is no fault.
LibavFunctions const& Libav();

// Has libav print nothing on the standard error output, now or when it is loaded.
void SilenceLibav();

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
		Libav().av_freep(static_cast<void*>(&inContext->buffer));
		Libav().avio_context_free(&inContext);
	}
};

template <class Object>
using LibavPointer = std::unique_ptr<Object, LibavDeleter>;

// Owns what libav has just allocated. Throws where there was no memory for it.
template <class Object>
LibavPointer<Object> Own(Object* inAllocated)
{
	if (!inAllocated)
	{
		throw std::bad_alloc();
	}
	return LibavPointer<Object>(inAllocated);
}

} // namespace SonaroHost
