#include "ParameterPort.h"

#include "Effects/Lv2/UridMap.h"

#include <lv2/patch/patch.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace SonaroHost::Effects
{

namespace
{

// The heads of an event, of the object and of its two properties, with all padding.
constexpr std::size_t kMessageBytes = 128;

template <class T>
T LimitTo(double inValue)
{
	constexpr double kLargest = 9.0e18;
	double const largest = std::min(static_cast<double>(std::numeric_limits<T>::max()), kLargest);
	return static_cast<T>(std::clamp(std::nearbyint(inValue), -largest, largest));
}

} // namespace

ParameterPort::ParameterPort(void* inMemory, std::size_t inBytes)
	: mMemory(static_cast<std::uint8_t*>(inMemory)),
	  mBytes(inBytes),
	  mSet(UridMap::Get().Map(LV2_PATCH__Set)),
	  mProperty(UridMap::Get().Map(LV2_PATCH__property)),
	  mValue(UridMap::Get().Map(LV2_PATCH__value))
{
	lv2_atom_forge_init(&mForge, UridMap::Get().GetMap());
	Clear();
}

void ParameterPort::Clear()
{
	lv2_atom_forge_set_buffer(&mForge, mMemory, mBytes);
	lv2_atom_forge_sequence_head(&mForge, &mSequence, 0);
}

template <class WriteValue>
bool ParameterPort::Write(std::uint32_t inFrame, PluginParameter const& inParameter, std::size_t inValueBytes,
	WriteValue const& inWriteValue)
{
	if (mForge.offset + kMessageBytes + inValueBytes > mBytes)
	{
		return false;
	}
	LV2_Atom_Forge_Frame object;
	lv2_atom_forge_frame_time(&mForge, inFrame);
	lv2_atom_forge_object(&mForge, &object, 0, mSet);
	lv2_atom_forge_key(&mForge, mProperty);
	lv2_atom_forge_urid(&mForge, inParameter.mProperty);
	lv2_atom_forge_key(&mForge, mValue);
	inWriteValue();
	lv2_atom_forge_pop(&mForge, &object);
	return true;
}

bool ParameterPort::Add(std::uint32_t inFrame, PluginParameter const& inParameter, double inValue)
{
	return Write(inFrame, inParameter, 0, [&] { WriteNumber(inParameter.mType, inValue); });
}

bool ParameterPort::Add(std::uint32_t inFrame, PluginParameter const& inParameter, std::string const& inText)
{
	return Write(inFrame, inParameter, inText.size(),
		[&]
		{
			lv2_atom_forge_typed_string(
				&mForge, inParameter.mType, inText.c_str(), static_cast<std::uint32_t>(inText.size()));
		});
}

void ParameterPort::WriteNumber(LV2_URID inType, double inValue)
{
	if (inType == mForge.Int)
	{
		lv2_atom_forge_int(&mForge, LimitTo<std::int32_t>(inValue));
	}
	else if (inType == mForge.Long)
	{
		lv2_atom_forge_long(&mForge, LimitTo<std::int64_t>(inValue));
	}
	else if (inType == mForge.Double)
	{
		lv2_atom_forge_double(&mForge, inValue);
	}
	else if (inType == mForge.Bool)
	{
		lv2_atom_forge_bool(&mForge, inValue > 0.0);
	}
	else
	{
		lv2_atom_forge_float(&mForge, static_cast<float>(inValue));
	}
}

} // namespace SonaroHost::Effects
