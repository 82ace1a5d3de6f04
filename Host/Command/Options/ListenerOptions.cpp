#include "ListenerOptions.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Binaural/SofaEars.h"

#include <cmath>
#include <memory>
#include <utility>

namespace SonaroCommand
{

using SonaroHost::HeadOrientation;
using SonaroHost::Listener;

namespace
{

float CheckAngle(char const* inOption, std::optional<float> const& inAngle)
{
	constexpr float kMostDegrees = 360.0f;
	float const angle = inAngle.value_or(0.0f);
	// Written so that what is not a number fails it.
	if (!(std::fabs(angle) <= kMostDegrees))
	{
		SonaroHost::Refuse(std::string(inOption) + ": " +
						   SonaroHost::FormatNumber(static_cast<double>(angle)) +
						   " is out of range; use -360 to 360 degrees");
	}
	return angle;
}

} // namespace

void ListenerOptions::AddOptions(CLI::App& ioParser)
{
	ioParser.add_flag("--binaural", mIsBinaural,
		"Render for headphones: the channels of the mix (mono, stereo, 5.1, 7.1 or ambisonic1) are heard "
		"from their places around the listener, and the output is stereo");
	ioParser
		.add_option("--listener", mEars,
			"Ears for --binaural: a SOFA file (AES69) of the convention SimpleFreeFieldHRIR, measured at 8 "
			"to 384 "
			"kHz (default: the ears of the KEMAR manikin)")
		->option_text("FILE");
	ioParser
		.add_option("--yaw", mYaw,
			"For --binaural, degrees by which the head is turned to the left, -360 to 360 (default: 0)")
		->option_text("DEGREES");
	ioParser
		.add_option("--head-pitch", mPitch,
			"For --binaural, degrees by which the head is turned upwards, -360 to 360 (default: 0)")
		->option_text("DEGREES");
	ioParser
		.add_option("--roll", mRoll,
			"For --binaural, degrees by which the head is tilted to the right shoulder, -360 to 360 "
			"(default: "
			"0)")
		->option_text("DEGREES");
}

std::optional<Listener> ListenerOptions::MakeListener() const
{
	for (auto const& [option, isGiven] :
		{std::pair("--listener", !mEars.empty()), std::pair("--yaw", mYaw.has_value()),
			std::pair("--head-pitch", mPitch.has_value()), std::pair("--roll", mRoll.has_value())})
	{
		if (isGiven && !mIsBinaural)
		{
			SonaroHost::Refuse(std::string(option) + " applies only to --binaural; give that as well");
		}
	}
	if (!mIsBinaural)
	{
		return std::nullopt;
	}
	Listener listener;
	listener.mEars = mEars.empty() ? nullptr : SonaroHost::ReadSofaEars(mEars);
	listener.mFile = mEars;
	listener.mOrientation = std::make_shared<HeadOrientation>(SonaroHost::HeadAngles{
		CheckAngle("--yaw", mYaw), CheckAngle("--head-pitch", mPitch), CheckAngle("--roll", mRoll)});
	return listener;
}

std::vector<std::filesystem::path> ListenerOptions::AddFile(std::vector<std::filesystem::path> inInputs) const
{
	if (!mEars.empty())
	{
		inInputs.emplace_back(mEars);
	}
	return inInputs;
}

} // namespace SonaroCommand
