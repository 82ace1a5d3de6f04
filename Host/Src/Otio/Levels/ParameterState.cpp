#include "ParameterState.h"

#include "LooseNumber.h"

namespace SonaroHost::Otio
{

namespace
{

bool AreEqual(JsonValue const& inA, JsonValue const& inB)
{
	auto const a = ParseLooseNumber(inA);
	auto const b = ParseLooseNumber(inB);
	bool const areTexts = inA.Is(JsonValue::Type::kString) && inB.Is(JsonValue::Type::kString);
	return a && b ? a->GetValue() == b->GetValue() : areTexts && inA.GetString() == inB.GetString();
}

} // namespace

ParameterState FindState(JsonValue const& inParameter, LevelShape const& inShape)
{
	JsonMember const* const keyframes = FindMember(inParameter, inShape.mKeyframes);
	if (keyframes != nullptr && !IsEmpty(keyframes->mValue))
	{
		return ParameterState::kChanged;
	}
	JsonMember const* const value = FindMember(inParameter, inShape.mValue);
	if (value == nullptr || value->mValue.Is(JsonValue::Type::kNull))
	{
		return ParameterState::kDefault;
	}
	JsonMember const* const usual = FindMember(inParameter, inShape.mDefault);
	if (usual == nullptr)
	{
		return ParameterState::kUnknown;
	}
	return AreEqual(value->mValue, usual->mValue) ? ParameterState::kDefault : ParameterState::kChanged;
}

bool IsSwitchedOff(JsonValue const& inObject)
{
	JsonMember const* const enabled = FindMember(inObject, "enabled");
	auto const number = enabled != nullptr ? ParseLooseNumber(enabled->mValue) : std::nullopt;
	return number && number->GetValue() == 0.0;
}

bool IsEmpty(JsonValue const& inValue)
{
	bool const canHold = inValue.Is(JsonValue::Type::kArray) || inValue.Is(JsonValue::Type::kObject);
	return inValue.Is(JsonValue::Type::kNull) ||
		   (canHold && inValue.GetElements().empty() && inValue.GetMembers().empty());
}

} // namespace SonaroHost::Otio
