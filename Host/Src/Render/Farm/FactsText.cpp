#include "FactsText.h"

#include "JsonFields.h"
#include "SonaroHost/Files/Digest.h"

namespace SonaroHost::Farm
{

namespace
{

constexpr char const* kSchema = "sonaro.piece";
constexpr int kVersion = 1;
constexpr std::size_t kDigits = 32;

std::string GetDigest(std::string const& inText)
{
	Digest digest;
	digest.Add(inText.data(), inText.size());
	return digest.GetText();
}

Json ListSegments(PieceFacts const& inFacts)
{
	Json list = Json::array();
	for (PieceFacts::Segment const& segment : inFacts.mSegments)
	{
		list.push_back({segment.mFrames, segment.mDigest, segment.mHeardBytes, segment.mHeardDigest});
	}
	return list;
}

void ReadSegments(JsonField const& inField, PieceFacts& outFacts)
{
	for (std::size_t i = 0; i < inField.CountItems(); ++i)
	{
		JsonField const segment = inField.At(i);
		if (segment.CountItems() != 4)
		{
			inField.Refuse("/segments/" + std::to_string(i), "has not four values");
		}
		outFacts.mSegments.push_back(
			{segment.At(std::size_t{0}).Get<std::int64_t>(), segment.At(1).Get<std::string>(),
				segment.At(2).Get<std::int64_t>(), segment.At(3).Get<std::string>()});
	}
}

Json ListDamaged(PieceFacts const& inFacts)
{
	Json list = Json::array();
	for (DamagedMedia const& media : inFacts.mDamaged)
	{
		Json stretches = Json::array();
		for (MediaDamage::Stretch const& stretch : media.mStretches)
		{
			stretches.push_back({stretch.mFirst, stretch.mEnd});
		}
		list.push_back({{"path", media.mPath.string()}, {"rate", media.mSampleRate},
			{"stretches", std::move(stretches)}});
	}
	return list;
}

void ReadDamaged(JsonField const& inField, PieceFacts& outFacts)
{
	for (std::size_t i = 0; i < inField.CountItems(); ++i)
	{
		JsonField const field = inField.At(i);
		DamagedMedia& media = outFacts.mDamaged.emplace_back();
		media.mPath = field.Get<std::string>("path");
		media.mSampleRate = field.Get<int>("rate");
		JsonField const stretches = field.At("stretches");
		for (std::size_t k = 0; k < stretches.CountItems(); ++k)
		{
			auto const ends = stretches.At(k).Get<std::pair<std::int64_t, std::int64_t>>();
			media.mStretches.push_back({ends.first, ends.second});
		}
	}
}

Json ListLearnedNoise(PieceFacts const& inFacts)
{
	Json list = Json::array();
	for (LearnedNoise const& noise : inFacts.mLearnedNoise)
	{
		Json json{{"path", noise.mPath.string()}, {"rate", noise.mSampleRate},
			{"reduction", noise.mDenoise.mReduction}};
		if (noise.mDenoise.mLearn)
		{
			json["learn"] = {noise.mDenoise.mLearn->mFirst, noise.mDenoise.mLearn->mEnd};
		}
		if (noise.mLevel)
		{
			json["level"] = *noise.mLevel;
		}
		list.push_back(std::move(json));
	}
	return list;
}

void ReadLearnedNoise(JsonField const& inField, PieceFacts& outFacts)
{
	for (std::size_t i = 0; i < inField.CountItems(); ++i)
	{
		JsonField const field = inField.At(i);
		LearnedNoise& noise = outFacts.mLearnedNoise.emplace_back();
		noise.mPath = field.Get<std::string>("path");
		noise.mSampleRate = field.Get<int>("rate");
		noise.mDenoise.mReduction = field.Get<double>("reduction");
		Json const json = field.Get<Json>();
		if (json.contains("learn"))
		{
			auto const ends = field.Get<std::pair<std::int64_t, std::int64_t>>("learn");
			noise.mDenoise.mLearn = {ends.first, ends.second};
		}
		if (json.contains("level"))
		{
			noise.mLevel = field.Get<double>("level");
		}
	}
}

PieceFacts ReadFacts(JsonField const& inField)
{
	if (inField.Get<std::string>("schema") != kSchema || inField.Get<int>("version") != kVersion)
	{
		inField.Refuse("/schema", "is not that of a piece of version " + std::to_string(kVersion));
	}
	PieceFacts facts;
	facts.mPlan = inField.Get<std::string>("plan");
	facts.mNumber = inField.Get<std::size_t>("piece");
	facts.mRange = {inField.Get<std::int64_t>("firstSample"), inField.Get<std::int64_t>("samples")};
	facts.mSampleRate = inField.Get<int>("rate");
	facts.mChannels = inField.Get<unsigned>("channels");
	facts.mBlockFrames = inField.Get<unsigned>("block");
	facts.mTaps = inField.Get<std::vector<std::string>>("taps");
	facts.mSamplesStart = inField.Get<std::int64_t>("samplesStart");
	facts.mHeardStart = inField.Get<std::int64_t>("tracksStart");
	ReadSegments(inField.At("segments"), facts);
	ReadDamaged(inField.At("damaged"), facts);
	ReadLearnedNoise(inField.At("learnedNoise"), facts);
	return facts;
}

} // namespace

std::string ToText(PieceFacts const& inFacts)
{
	Json const json{{"schema", kSchema}, {"version", kVersion}, {"plan", inFacts.mPlan},
		{"piece", inFacts.mNumber}, {"firstSample", inFacts.mRange.mFirstFrame},
		{"samples", inFacts.mRange.mFrames}, {"rate", inFacts.mSampleRate}, {"channels", inFacts.mChannels},
		{"block", inFacts.mBlockFrames}, {"taps", inFacts.mTaps}, {"samplesStart", inFacts.mSamplesStart},
		{"tracksStart", inFacts.mHeardStart}, {"segments", ListSegments(inFacts)},
		{"damaged", ListDamaged(inFacts)}, {"learnedNoise", ListLearnedNoise(inFacts)}};
	std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
	text += (kDigits + 1 + text.size()) % 2 == 0 ? "" : " ";
	return GetDigest(text) + "\n" + text;
}

PieceFacts ReadFacts(std::filesystem::path const& inPath, std::string const& inText)
{
	bool const isLong = inText.size() > kDigits + 1;
	std::string const text = isLong ? inText.substr(kDigits + 1) : std::string();
	Json const json = Json::parse(text, nullptr, false);
	if (!isLong || inText.substr(0, kDigits) != GetDigest(text) || !json.is_object())
	{
		RefuseFile(inPath, "is a damaged piece", "render it again");
	}
	return ReadFacts({inPath, "a piece", json});
}

} // namespace SonaroHost::Farm
