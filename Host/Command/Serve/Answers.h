#pragma once

#include "SonaroHost/Serve/MixFile.h"
#include "SonaroHost/Serve/ServedTimeline.h"

#include <httplib.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

// How requests are read and answered, whatever they are about. What is wrong with a request is thrown as a RefusedRequest.
namespace SonaroCommand::Serve
{

struct RefusedRequest
{
	int mStatus = 400;
	std::string mReason;
};

// A whole number from 0 on, of a parameter or a path; nothing without the parameter.
std::uint64_t ParseNumber(std::string_view inText, std::string const& inWhat);
std::optional<std::uint64_t> FindNumber(httplib::Request const& inRequest, std::string const& inName);

// "mute" and "solo", each a list of numbers, as in ?mute=2,3&solo=1.
SonaroHost::Serve::TrackChoice ReadTrackChoice(httplib::Request const& inRequest);

void AnswerError(httplib::Response& outResponse, int inStatus, std::string const& inReason);
// The status for an exception of a handler.
void AnswerException(httplib::Response& outResponse, std::exception_ptr inException);

// A text that stays the same as long as its tag does; 304 for a client that has it.
void AnswerTagged(httplib::Request const& inRequest, httplib::Response& outResponse, std::string const& inTag,
	std::string const& inBody, char const* inType);

// The bytes that are asked for of the file.
void AnswerWave(httplib::Request const& inRequest, httplib::Response& outResponse,
	std::shared_ptr<SonaroHost::Serve::MixFile const> const& inFile);
// All of a stream, in chunks.
void AnswerStream(httplib::Request const& inRequest, httplib::Response& outResponse,
	std::shared_ptr<SonaroHost::Serve::MixStream> const& inStream, char const* inType);

// When a render for one answer, or for the next piece of it, is given up.
SonaroHost::Serve::MixFile::Clock::time_point GetRenderDeadline();

} // namespace SonaroCommand::Serve
