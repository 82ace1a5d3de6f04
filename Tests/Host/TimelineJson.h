#pragma once

#include <initializer_list>
#include <string>

#include <nlohmann/json.hpp>

// What timelines are made of, as the files have it. Times are seconds, written in frames of a 25th of a second.
namespace SonaroHost::Testing
{

using Json = nlohmann::json;

Json Time(double inSeconds);
Json Range(double inStart, double inSeconds);

// Compilers differ on what a list of one value in braces is.
Json List(std::initializer_list<Json> inValues);
// An object with more keys, or others.
Json With(Json inObject, Json const& inKeys);
// Settings of ours in an object's metadata.
Json WithSettings(Json inObject, Json const& inSettings);

Json Clip(
	std::string const& inName, std::string const& inMedia, double inStart = 0.0, double inSeconds = 1.0);
Json Gap(double inSeconds);
Json Marker(std::string const& inName, double inStart, double inSeconds);
// Of kind Audio.
Json Track(std::string const& inName, std::initializer_list<Json> inChildren);
Json Stack(std::initializer_list<Json> inChildren);
Json Timeline(std::initializer_list<Json> inTracks, std::initializer_list<Json> inMarkers = {});

} // namespace SonaroHost::Testing
