#include "InfoCommand.h"

#include "Console.h"
#include "Json.h"
#include "OptionGroups.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Media/AudioFileInfo.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "TimelineInfo.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace SonaroCommand
{

namespace
{

using SonaroHost::AudioFileInfo;

// "mono", "stereo: left, right", "7 channels without places".
std::string DescribeLayout(zorvmediatypes::AudioChannelLayout const& inLayout)
{
	std::string text = SonaroHost::GetLayoutName(inLayout);
	std::vector<std::string> const places = SonaroHost::GetPlaceNames(inLayout);
	if (places.empty())
	{
		return text + " without places";
	}
	char const* separator = ": ";
	for (std::size_t i = 0; i < places.size() && places.size() > 1; ++i)
	{
		text += separator + places[i];
		separator = ", ";
	}
	return text;
}

std::string DescribeForPeople(AudioFileInfo const& inInfo)
{
	std::string text;
	auto const add = [&text](std::string inName, std::string const& inValue)
	{
		inName.resize(10, ' ');
		text += inName + inValue + "\n";
	};
	add("File", SonaroHost::MakePrintable(inInfo.mPath.string()));
	add("Format", inInfo.mContainer + ", " + inInfo.mEncoding);
	add("Channels", std::to_string(inInfo.GetNumChannels()) + " (" + DescribeLayout(inInfo.mLayout) + ")");
	add("Rate", std::to_string(inInfo.mSampleRate) + " Hz");
	add("Length", SonaroHost::FormatTime(inInfo.mFrames, inInfo.mSampleRate) + " (" +
					  std::to_string(inInfo.mFrames) + " samples" +
					  (inInfo.mStatesLength ? ")" : "; not stated in the header, found by reading)"));
	return text;
}

std::string DescribeForMachines(AudioFileInfo const& inInfo)
{
	Json json;
	json["file"] = inInfo.mPath.string();
	json["format"] = inInfo.mContainer;
	json["encoding"] = inInfo.mEncoding;
	json["channels"] = inInfo.GetNumChannels();
	json["layout"] = SonaroHost::GetLayoutName(inInfo.mLayout);
	json["places"] = SonaroHost::GetPlaceNames(inInfo.mLayout);
	json["rate"] = inInfo.mSampleRate;
	json["samples"] = inInfo.mFrames;
	json["seconds"] = static_cast<double>(inInfo.mFrames) / inInfo.mSampleRate;
	json["statesLength"] = inInfo.mStatesLength;
	return ToText(json);
}

} // namespace

InfoCommand::InfoCommand(CLI::App& ioProgram)
	: Command(ioProgram, "info", "Tell what a sound file or a timeline is")
{
	GetParser()
		.add_option(
			"INPUT", mInput, "The sound file, - for the standard input, or a timeline: .otio, .otioz, .otiod")
		->option_text("(required)")
		->required();
	GetParser()
		.add_option("--media", mMediaFolders,
			"A folder in which to look for a timeline's media that are not in their place; may be given "
			"again")
		->option_text("DIR ...")
		->allow_extra_args(false);
	GetParser().add_flag("--json", mAsJson, "Print it as JSON");
	GroupByInput(GetParser(), {}, {"--media"});
}

std::string InfoCommand::DescribeInputs() const
{
	return "info takes sound files (such as WAV, AIFF, FLAC, Ogg and MP3) and timelines (.otio, .otioz, "
		   ".otiod)";
}

int InfoCommand::Run()
{
	if (SonaroHost::Otio::IsTimelinePath(mInput))
	{
		std::vector<std::filesystem::path> const folders(mMediaFolders.begin(), mMediaFolders.end());
		return TellOfTimeline(mInput, folders, mAsJson);
	}
	RefuseGroup(GetParser(), kForTimelines, "is for timelines (.otio, .otioz, .otiod)");
	AudioFileInfo const info = SonaroHost::InspectAudioFile(mInput);
	PrintResult(mAsJson ? DescribeForMachines(info) : DescribeForPeople(info));
	return kExitSuccess;
}

} // namespace SonaroCommand
