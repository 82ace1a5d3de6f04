#include "Answers.h"

#include "Http/ByteRange.h"
#include "Http/HttpServer.h"
#include "Report/Json.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Serve/TooBusyError.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <new>
#include <set>
#include <utility>

namespace SonaroCommand::Serve
{

using namespace SonaroHost::Serve;

namespace
{

constexpr auto kRenderTime = std::chrono::seconds(20);
// What is rendered before a reader takes it: the first piece so small that it comes soon.
constexpr std::int64_t kFirstBytes = 32768;
constexpr std::int64_t kPieceBytes = 262144;

std::set<unsigned> ReadTracks(httplib::Request const& inRequest, std::string const& inName)
{
	std::set<unsigned> tracks;
	for (std::size_t i = 0; i < inRequest.get_param_value_count(inName); ++i)
	{
		std::string const value = inRequest.get_param_value(inName, i);
		for (std::string_view rest = value; !rest.empty();)
		{
			std::size_t const comma = std::min(rest.find(','), rest.size());
			std::uint64_t const number = ParseNumber(rest.substr(0, comma), inName);
			constexpr std::uint64_t kMostTracks = 1000000;
			tracks.insert(static_cast<unsigned>(std::min(number, kMostTracks)));
			rest.remove_prefix(std::min(comma + 1, rest.size()));
		}
	}
	return tracks;
}

// Whether the client has it already.
bool AnswerUnchanged(httplib::Request const& inRequest, httplib::Response& outResponse,
	std::string const& inTag, bool inIsWeak)
{
	outResponse.set_header("ETag", FormatEntityTag(inTag, inIsWeak));
	outResponse.set_header("Cache-Control", "no-cache");
	bool const isKnown = NamesTag(inRequest.get_header_value("If-None-Match"), inTag);
	outResponse.status = isKnown ? 304 : 200;
	return isKnown;
}

} // namespace

MixFile::Clock::time_point GetRenderDeadline()
{
	return MixFile::Clock::now() + kRenderTime;
}

std::uint64_t ParseNumber(std::string_view inText, std::string const& inWhat)
{
	std::uint64_t number = 0;
	auto const result = std::from_chars(inText.data(), inText.data() + inText.size(), number);
	if (result.ec != std::errc() || result.ptr != inText.data() + inText.size())
	{
		throw RefusedRequest{400, "\"" + inWhat + "\" takes whole numbers from 0 on"};
	}
	return number;
}

std::optional<std::uint64_t> FindNumber(httplib::Request const& inRequest, std::string const& inName)
{
	return inRequest.has_param(inName) ? std::optional(ParseNumber(inRequest.get_param_value(inName), inName))
									   : std::nullopt;
}

TrackChoice ReadTrackChoice(httplib::Request const& inRequest)
{
	return {ReadTracks(inRequest, "mute"), ReadTracks(inRequest, "solo")};
}

void AnswerError(httplib::Response& outResponse, int inStatus, std::string const& inReason)
{
	outResponse.status = inStatus;
	outResponse.set_header("Cache-Control", "no-store");
	outResponse.set_content(ToText({{"error", inReason}}), "application/json");
	if (inStatus == 503)
	{
		outResponse.set_header("Retry-After", "1");
	}
	if (inStatus == 401)
	{
		outResponse.set_header("WWW-Authenticate", "Bearer");
	}
}

void AnswerException(httplib::Response& outResponse, std::exception_ptr inException)
{
	using Kind = SonaroHost::HostError::Kind;
	try
	{
		std::rethrow_exception(std::move(inException));
	}
	catch (RefusedRequest const& refused)
	{
		AnswerError(outResponse, refused.mStatus, refused.mReason);
	}
	catch (TooBusyError const& error)
	{
		AnswerError(outResponse, 503, error.what());
	}
	catch (SonaroHost::HostError const& error)
	{
		AnswerError(outResponse, error.GetKind() == Kind::kRequest ? 404 : 500, error.what());
	}
	catch (std::bad_alloc const&)
	{
		AnswerError(outResponse, 503, "not enough memory");
	}
	catch (std::exception const& error)
	{
		AnswerError(outResponse, 500, error.what());
	}
}

void AnswerTagged(httplib::Request const& inRequest, httplib::Response& outResponse, std::string const& inTag,
	std::string const& inBody, char const* inType)
{
	// The library may compress it, which makes other bytes of it.
	if (!AnswerUnchanged(inRequest, outResponse, inTag, true))
	{
		outResponse.set_content(inBody, inType);
	}
}

void AnswerWave(httplib::Request const& inRequest, httplib::Response& outResponse,
	std::shared_ptr<MixFile const> const& inFile)
{
	bool const isInexact = !inFile->GetWhyInOneRun().empty();
	std::string const tag = FormatEntityTag(inFile->GetTag(), isInexact);
	outResponse.set_header("Accept-Ranges", "bytes");
	if (isInexact)
	{
		outResponse.set_header("Sonaro-Warm-Up-Seconds", std::to_string(inFile->GetWarmUpSeconds()));
	}
	if (AnswerUnchanged(inRequest, outResponse, inFile->GetTag(), isInexact))
	{
		return;
	}
	std::int64_t const length = inFile->GetLength();
	bool const isPart = AllowsRange(inRequest.get_header_value("If-Range"), tag);
	ByteRange const range =
		ChooseByteRange(isPart ? inRequest.get_header_value(HttpServer::kRangeHeader) : "", length);
	if (range.mKind == ByteRange::Kind::kNone)
	{
		AnswerError(outResponse, 416, "the file has " + std::to_string(length) + " bytes");
		outResponse.set_header("Content-Range", "bytes */" + std::to_string(length));
		return;
	}
	inFile->CheckRange(range.mFirst, range.mEnd);
	// What cannot be rendered is refused while there is still a status to say so.
	auto const first = std::make_shared<std::string>(
		inRequest.method == "HEAD"
			? std::string()
			: inFile->Read(
				  range.mFirst, std::min(kFirstBytes, range.mEnd - range.mFirst), GetRenderDeadline()));
	if (range.mKind == ByteRange::Kind::kPart)
	{
		outResponse.status = 206;
		outResponse.set_header("Content-Range", "bytes " + std::to_string(range.mFirst) + "-" +
													std::to_string(range.mEnd - 1) + "/" +
													std::to_string(length));
	}
	outResponse.set_content_provider(static_cast<std::size_t>(range.mEnd - range.mFirst), "audio/wav",
		[inFile, range, first](std::size_t inOffset, std::size_t, httplib::DataSink& ioSink)
		{
			try
			{
				std::int64_t const at = range.mFirst + static_cast<std::int64_t>(inOffset);
				std::string const bytes =
					inOffset == 0
						? *first
						: inFile->Read(at, std::min(kPieceBytes, range.mEnd - at), GetRenderDeadline());
				return ioSink.write(bytes.data(), bytes.size());
			}
			catch (std::exception const&)
			{
				// The connection is closed before the length that was announced.
				return false;
			}
		});
}

void AnswerStream(httplib::Request const& inRequest, httplib::Response& outResponse,
	std::shared_ptr<MixStream> const& inStream, char const* inType)
{
	outResponse.status = 200;
	outResponse.set_header("Accept-Ranges", "none");
	outResponse.set_header("Cache-Control", "no-store");
	auto const first = std::make_shared<std::string>(
		inRequest.method == "HEAD" ? std::string() : inStream->Read(GetRenderDeadline()));
	outResponse.set_chunked_content_provider(inType,
		[inStream, first](std::size_t inOffset, httplib::DataSink& ioSink)
		{
			try
			{
				std::string const bytes = inOffset == 0 ? *first : inStream->Read(GetRenderDeadline());
				if (bytes.empty())
				{
					ioSink.done();
					return true;
				}
				return ioSink.write(bytes.data(), bytes.size());
			}
			catch (std::exception const&)
			{
				return false;
			}
		});
}

} // namespace SonaroCommand::Serve
