#include "MediaRows.h"

#include "SonaroHost/Metering/LoudnessMeter.h"

namespace SonaroCommand
{

Json DescribeStart(SonaroHost::MediaStart const& inStart)
{
	Json json;
	json["text"] = inStart.mText;
	json["seconds"] = static_cast<double>(inStart.mUnits) * static_cast<double>(inStart.mRateDivisor) /
					  static_cast<double>(inStart.mRate);
	return json;
}

Json DescribeDenoise(SonaroHost::Denoise const& inDenoise)
{
	Json json{{"uri", SonaroHost::Denoise::kUri}, {"reduction", inDenoise.mReduction}, {"learn", nullptr}};
	if (auto const& learn = inDenoise.mLearn)
	{
		json["learn"] = {{"firstMediaSample", learn->mFirst}, {"endMediaSample", learn->mEnd}};
	}
	return json;
}

Json ListLearnedNoise(std::vector<SonaroHost::LearnedNoise> const& inNoises)
{
	Json list = Json::array();
	for (SonaroHost::LearnedNoise const& noise : inNoises)
	{
		Json json = DescribeDenoise(noise.mDenoise);
		json["path"] = noise.mPath.string();
		json["rate"] = noise.mSampleRate;
		json["levelDbfs"] = noise.mLevel ? Json(SonaroHost::ToDecibels(*noise.mLevel)) : Json();
		list.push_back(json);
	}
	return list;
}

Json ListDamage(std::vector<SonaroHost::MediaDamage::Stretch> const& inStretches)
{
	Json list = Json::array();
	for (SonaroHost::MediaDamage::Stretch const& stretch : inStretches)
	{
		list.push_back({{"firstSample", stretch.mFirst}, {"endSample", stretch.mEnd}});
	}
	return list;
}

Json ListDamaged(std::vector<SonaroHost::DamagedMedia> const& inMedia)
{
	Json list = Json::array();
	for (SonaroHost::DamagedMedia const& media : inMedia)
	{
		list.push_back({{"path", media.mPath.string()}, {"rate", media.mSampleRate},
			{"stretches", ListDamage(media.mStretches)}});
	}
	return list;
}

} // namespace SonaroCommand
