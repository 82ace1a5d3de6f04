#include "ChainReader.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Effects/PreparedEffect.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace SonaroPython
{

using namespace SonaroHost;

namespace
{

// Its value where there are no points, its points and their scale.
struct ReadCurve
{
	double mValue = 0.0;
	std::vector<AutomationPoint> mPoints;
	AutomationScale mScale = AutomationScale::kLinear;
};

ReadCurve ReadParts(py::handle const& inParameter)
{
	auto const parts = py::reinterpret_borrow<py::tuple>(inParameter);
	ReadCurve curve{parts[0].cast<double>(), {}, static_cast<AutomationScale>(parts[2].cast<int>())};
	for (py::handle const& item : parts[1])
	{
		auto const point = py::reinterpret_borrow<py::tuple>(item);
		curve.mPoints.push_back({SN::TickTime::FromTicks(point[0].cast<std::int64_t>()),
			point[1].cast<double>(), static_cast<Interpolation>(point[2].cast<int>())});
	}
	return curve;
}

template <class T>
SN::InterfaceRef<AutomationParameter<T>> MakeParameter(ReadCurve inCurve)
{
	auto parameter = AutomationParameter<T>::Create(static_cast<T>(inCurve.mValue));
	if (!inCurve.mPoints.empty())
	{
		parameter->SetCurve(
			std::make_shared<AutomationCurve const>(std::move(inCurve.mPoints), inCurve.mScale));
	}
	return parameter;
}

Effects::ControlSetting MakeSetting(std::string inSymbol, py::handle const& inParameter)
{
	ReadCurve curve = ReadParts(inParameter);
	return {std::move(inSymbol), curve.mValue, std::move(curve.mPoints)};
}

// Throws a HostError without the place of the effect.
Sequence::Effect PrepareEffect(py::tuple const& inStage, double inSampleRate, std::size_t inChannels)
{
	Effects::EffectSetup setup{inStage[1].cast<std::string>(), inStage[2].cast<std::string>()};
	for (py::handle const& item : inStage[3])
	{
		auto const control = py::reinterpret_borrow<py::tuple>(item);
		setup.mSettings.push_back(MakeSetting(control[0].cast<std::string>(), control[1]));
	}
	if (!inStage[4].is_none())
	{
		setup.mBypass = MakeSetting({}, inStage[4]);
	}
	Effects::PreparedEffect effect(setup, inSampleRate);
	effect.CheckChannels(inChannels);
	Sequence::Effect stage{effect.GetName(), {}, false, effect.GetJumps(), effect.GetFacts()};
	stage.mMake = [made = std::move(effect)](auto const&... inGraph) { return made.Make(inGraph...); };
	return stage;
}

// ("effect", uri, preset, controls, bypass, place)
Sequence::Effect ReadEffect(py::tuple const& inStage, double inSampleRate, std::size_t inChannels)
{
	try
	{
		return PrepareEffect(inStage, inSampleRate, inChannels);
	}
	catch (HostError const& error)
	{
		HostError::Parts parts = error.GetParts();
		parts.mPlace = inStage[5].cast<std::string>() + (parts.mPlace.empty() ? "" : ", ") + parts.mPlace;
		throw HostError(error.GetKind(), std::move(parts));
	}
}

Sequence::Stage ReadStage(py::tuple const& inStage, double inSampleRate, std::size_t inChannels)
{
	auto const kind = inStage[0].cast<std::string>();
	if (kind == "fader")
	{
		return Sequence::Fader{ReadNumber(inStage[1]), ReadSwitch(inStage[2])};
	}
	if (kind == "send")
	{
		return Sequence::Send{inStage[1].cast<std::size_t>(),
			{ReadNumber(inStage[2]), ReadSwitch(inStage[3])}, ReadNumber(inStage[4])};
	}
	return ReadEffect(inStage, inSampleRate, inChannels);
}

} // namespace

Sequence::NumberParameter ReadNumber(py::handle const& inParameter)
{
	return inParameter.is_none() ? nullptr : MakeParameter<float>(ReadParts(inParameter));
}

Sequence::SwitchParameter ReadSwitch(py::handle const& inParameter)
{
	return inParameter.is_none() ? nullptr : MakeParameter<bool>(ReadParts(inParameter));
}

Sequence::Fade ReadFade(py::handle const& inFade)
{
	auto const fade = py::reinterpret_borrow<py::tuple>(inFade);
	return {
		SN::TickTime::FromTicks(fade[0].cast<std::int64_t>()), static_cast<FadeShape>(fade[1].cast<int>())};
}

Sequence::Chain ReadChain(py::dict const& inOwner, double inSampleRate, std::size_t inChannels)
{
	Sequence::Chain chain;
	for (py::handle const& stage : inOwner["stages"])
	{
		chain.mStages.push_back(
			ReadStage(py::reinterpret_borrow<py::tuple>(stage), inSampleRate, inChannels));
	}
	chain.mPan = ReadNumber(inOwner["pan"]);
	return chain;
}

} // namespace SonaroPython
