#include "SonaroHost/Render/FarmPlan.h"

#include "JsonFields.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Files/Digest.h"
#include "SonaroHost/Files/WholeFile.h"
#include "SonaroHost/Render/OutputRequest.h"

#include <cstdint>
#include <utility>

namespace SonaroHost
{

namespace
{

using Farm::Json;
using Farm::JsonField;

constexpr char const* kSchema = "sonaro.plan";
constexpr char const* kPlanKind = "a plan";
// One more for any change that a reader would stumble over.
constexpr int kVersion = 1;
// Far more than any programme has, and sums of two are still exact.
constexpr std::int64_t kMostPlannedFrames = std::int64_t{1} << 52;
constexpr std::int64_t kHighestPlannedRate = 768000;

Json Describe(FileFingerprint const& inPrint)
{
	Json json{{"path", inPrint.mPath.string()}};
	if (inPrint.IsThere())
	{
		json["bytes"] = inPrint.mBytes;
		json["modified"] = inPrint.mTime;
		json["digest"] = inPrint.mDigest;
	}
	return json;
}

FileFingerprint ReadFingerprint(JsonField const& inField)
{
	FileFingerprint print{inField.Get<std::string>("path"), -1, 0, {}};
	if (print.mPath.empty())
	{
		inField.At("path").Refuse("is empty");
	}
	if (inField.Get<Json>().contains("digest"))
	{
		print.mBytes = inField.Get<std::int64_t>("bytes");
		print.mTime = inField.Get<std::int64_t>("modified");
		print.mDigest = inField.Get<std::string>("digest");
	}
	return print;
}

Json Describe(ProgrammeRange const& inRange)
{
	return {{"firstSample", inRange.mFirstFrame}, {"samples", inRange.mFrames}};
}

ProgrammeRange ReadRange(JsonField const& inField)
{
	return {inField.GetWhole("firstSample", 0, kMostPlannedFrames),
		inField.GetWhole("samples", 1, kMostPlannedFrames)};
}

Json ListPieces(FarmPlan const& inPlan)
{
	Json list = Json::array();
	for (FarmPiece const& piece : inPlan.mPieces)
	{
		Json json = Describe(piece.mRange);
		json["piece"] = list.size() + 1;
		json["cost"] = piece.mCost;
		list.push_back(std::move(json));
	}
	return list;
}

void ReadOptions(JsonField const& inField, FarmPlan::Options& outOptions)
{
	for (std::size_t i = 0; i < inField.CountItems(); ++i)
	{
		JsonField const option = inField.At(i);
		auto name = option.Get<std::string>("option");
		if (name == "--stems")
		{
			inField.Refuse("/options/" + std::to_string(i), "is --stems, but a plan is that of one file");
		}
		outOptions.emplace_back(std::move(name), option.Get<std::vector<std::string>>("values"));
	}
}

// The pieces follow each other and make up the range.
void ReadPieces(JsonField const& inField, FarmPlan& ioPlan)
{
	std::int64_t end = ioPlan.mRange.mFirstFrame;
	for (std::size_t i = 0; i < inField.CountItems(); ++i)
	{
		FarmPiece const piece{ReadRange(inField.At(i)), inField.At(i).Get<double>("cost")};
		std::string const place = "/pieces/" + std::to_string(i);
		if (piece.mRange.mFirstFrame != end)
		{
			inField.Refuse(place, "does not begin where the piece before ends");
		}
		if ((end - ioPlan.mRange.mFirstFrame) % ioPlan.mBlockFrames != 0)
		{
			inField.Refuse(place, "does not begin at a block of the programme");
		}
		end += piece.mRange.mFrames;
		if (end > ioPlan.mRange.mFirstFrame + ioPlan.mRange.mFrames)
		{
			inField.Refuse(place, "ends after the programme");
		}
		ioPlan.mPieces.push_back(piece);
	}
	if (end != ioPlan.mRange.mFirstFrame + ioPlan.mRange.mFrames || ioPlan.mPieces.empty())
	{
		inField.Refuse("/pieces", "does not make up the programme");
	}
	if (!ioPlan.mWhyWhole.empty() && ioPlan.mPieces.size() > 1)
	{
		inField.Refuse("/pieces", "has more than the one piece that such a programme has");
	}
}

FarmPlan ReadPlan(JsonField const& inField)
{
	if (inField.Get<std::string>("schema") != kSchema || inField.Get<int>("version") != kVersion)
	{
		inField.Refuse("/schema", "is not that of a plan of version " + std::to_string(kVersion));
	}
	FarmPlan plan;
	plan.mProgram = inField.Get<std::string>("program");
	plan.mInput = inField.Get<std::string>("input");
	plan.mTimeline = ReadFingerprint(inField.At("timeline"));
	ReadOptions(inField.At("options"), plan.mOptions);
	JsonField const programme = inField.At("programme");
	plan.mSampleRate = static_cast<int>(programme.GetWhole("rate", 1, kHighestPlannedRate));
	plan.mChannels = static_cast<unsigned>(programme.GetWhole("channels", 1, kMaxChannels));
	plan.mBlockFrames = static_cast<unsigned>(programme.GetWhole("block", 1, kMaxBlockFrames));
	plan.mHasTracks = programme.Get<bool>("tracks");
	plan.mRange = ReadRange(programme);
	plan.mMissingClips = programme.Get<std::size_t>("missingClips");
	plan.mMissingEffects = programme.Get<std::size_t>("missingEffects");
	plan.mWhyWhole = programme.Get<std::string>("whole");
	JsonField const media = inField.At("media");
	for (std::size_t i = 0; i < media.CountItems(); ++i)
	{
		plan.mMedia.push_back(ReadFingerprint(media.At(i)));
	}
	ReadPieces(inField.At("pieces"), plan);
	return plan;
}

} // namespace

std::string ToText(FarmPlan const& inPlan)
{
	Json json{{"schema", kSchema}, {"version", kVersion}, {"program", inPlan.mProgram},
		{"input", inPlan.mInput}, {"timeline", Describe(inPlan.mTimeline)}, {"options", Json::array()}};
	for (auto const& [name, values] : inPlan.mOptions)
	{
		json["options"].push_back({{"option", name}, {"values", values}});
	}
	Json programme = Describe(inPlan.mRange);
	programme.update(Json{{"rate", inPlan.mSampleRate}, {"channels", inPlan.mChannels},
		{"block", inPlan.mBlockFrames}, {"tracks", inPlan.mHasTracks}, {"missingClips", inPlan.mMissingClips},
		{"missingEffects", inPlan.mMissingEffects}, {"whole", inPlan.mWhyWhole}});
	json["programme"] = std::move(programme);
	json["pieces"] = ListPieces(inPlan);
	json["media"] = Json::array();
	for (FileFingerprint const& print : inPlan.mMedia)
	{
		json["media"].push_back(Describe(print));
	}
	return Farm::ToText(json);
}

FarmPlan ReadFarmPlan(std::filesystem::path const& inPath)
{
	std::string const text = ReadWholeFile(inPath, "give the file that sonaro plan wrote");
	Json const json = Json::parse(text, nullptr, false);
	if (!json.is_object())
	{
		RefuseFile(inPath, "is not a plan", "give the file that sonaro plan wrote");
	}
	FarmPlan plan = ReadPlan({inPath, kPlanKind, json});
	plan.mPath = inPath;
	return plan;
}

void RefusePlan(FarmPlan const& inPlan, std::string const& inPlace, std::string const& inReason)
{
	JsonField(inPlan.mPath, kPlanKind, Json()).Refuse(inPlace, inReason);
}

std::string GetIdentity(FarmPlan const& inPlan)
{
	std::string const text = ToText(inPlan);
	Digest digest;
	digest.Add(text.data(), text.size());
	return digest.GetText();
}

} // namespace SonaroHost
