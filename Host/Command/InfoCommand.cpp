#include "Command.h"

#include "Options/SharedOptions.h"
#include "Report/Json.h"
#include "Report/MediaRows.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Media/AudioFileInspection.h"
#include "SonaroHost/Media/MediaDamage.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "Terminal/Console.h"
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

// "mono", "stereo: left, right", "7 channels, no speaker positions".
std::string DescribeLayout(zorvmediatypes::AudioChannelLayout const& inLayout)
{
	std::string text = SonaroHost::GetLayoutName(inLayout);
	std::vector<std::string> const places = SonaroHost::GetPlaceNames(inLayout);
	if (places.empty())
	{
		return text + ", no speaker positions";
	}
	char const* separator = ": ";
	for (std::size_t i = 0; i < places.size() && places.size() > 1; ++i)
	{
		text += separator + places[i];
		separator = ", ";
	}
	return text;
}

// "2: AAC, 2 channels, 48000 Hz, English".
std::string DescribeStream(std::size_t inIndex, SonaroHost::AudioStreamInfo const& inStream)
{
	return std::to_string(inIndex + 1) + ": " + inStream.mEncoding + ", " +
		   std::to_string(inStream.mChannels) + (inStream.mChannels == 1 ? " channel, " : " channels, ") +
		   std::to_string(inStream.mSampleRate) + " Hz" +
		   (inStream.mName.empty() ? "" : ", " + SonaroHost::MakePrintable(inStream.mName)) +
		   (inStream.mIsRead ? "" : " (not read)");
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
					  (inInfo.mStatesLength ? ")" : "; not stated in the header, counted by decoding)"));
	if (inInfo.mStart)
	{
		add("Start", inInfo.mStart->mText);
	}
	for (std::size_t i = 0; i < inInfo.mStreams.size(); ++i)
	{
		add(i == 0 ? "Streams" : "", DescribeStream(i, inInfo.mStreams[i]));
	}
	for (std::string const& remark : inInfo.mRemarks)
	{
		add("Remark", remark);
	}
	if (auto const damage = inInfo.mDamage->Get(); !damage.empty())
	{
		add("Damage", SonaroHost::DescribeDamage({inInfo.mPath, inInfo.mSampleRate, damage}));
	}
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
	if (inInfo.mStart)
	{
		json["start"] = DescribeStart(*inInfo.mStart);
	}
	for (SonaroHost::AudioStreamInfo const& stream : inInfo.mStreams)
	{
		json["streams"].push_back({{"encoding", stream.mEncoding}, {"name", stream.mName},
			{"channels", stream.mChannels}, {"rate", stream.mSampleRate}, {"isRead", stream.mIsRead}});
	}
	json["remarks"] = inInfo.mRemarks;
	json["damaged"] = ListDamage(inInfo.mDamage->Get());
	return ToText(json);
}

class InfoCommand final : public Command
{
public:
	explicit InfoCommand(CLI::App& ioProgram)
		: Command(ioProgram, "info",
			  "Show the format and length of a sound file or movie, or the contents of a timeline")
	{
		Add("INPUT", mInput, "(required)",
			"Sound file or movie, - for the standard input, or timeline (.otio, .otioz, .otiod)")
			->required();
		Add("--media", mMediaFolders, "DIR ...",
			"Folder to search for media that are not found at their own paths; can be given more than once")
			->allow_extra_args(false);
		AddStreamOption(GetParser(), mStream);
		AddFlag("--json", mAsJson, "Print the result as JSON");
		GroupByInput(GetParser(), {"--stream"}, {"--media"});
		// Without one of its own a command would show that of the program.
		GetParser().footer("Examples:\n"
						   "  sonaro info interview.wav\n"
						   "  sonaro info edit.otio --media /mnt/sound\n"
						   "  sonaro render edit.otio -o - | sonaro info -");
	}

	int Run() override
	{
		if (SonaroHost::Otio::IsTimelinePath(mInput))
		{
			std::vector<std::filesystem::path> const folders(mMediaFolders.begin(), mMediaFolders.end());
			RefuseGroup(GetParser(), kForSoundFiles,
				"applies only to sound files and movies; a timeline sets this itself");
			return TellOfTimeline(mInput, folders, mAsJson);
		}
		RefuseGroup(GetParser(), kForTimelines, "applies only to timelines (.otio, .otioz, .otiod)");
		AudioFileInfo const info = SonaroHost::InspectAudioFile(mInput, mStream);
		PrintResult(mAsJson ? DescribeForMachines(info) : DescribeForPeople(info));
		return kExitSuccess;
	}

private:
	std::string mInput;
	std::vector<std::string> mMediaFolders;
	unsigned mStream = 0;
	bool mAsJson = false;
};

} // namespace

std::unique_ptr<Command> MakeInfoCommand(CLI::App& ioProgram)
{
	return std::make_unique<InfoCommand>(ioProgram);
}

} // namespace SonaroCommand
