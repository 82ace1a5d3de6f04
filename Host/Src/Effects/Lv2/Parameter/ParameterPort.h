#pragma once

#include "PluginParameter.h"

#include <lv2/atom/forge.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace SonaroHost::Effects
{

// An atom port of a plugin, into which values of parameters are written as messages for the next run.
//
// Threads  One at a time. Nothing allocates or locks after the constructor.
class ParameterPort
{
public:
	// inMemory: that of the port, which outlives this.
	ParameterPort(void* inMemory, std::size_t inBytes);
	ParameterPort(ParameterPort const&) = delete;
	ParameterPort& operator=(ParameterPort const&) = delete;

	// No messages.
	void Clear();
	// At a frame of the next run, none of which is before that of the last message. False, and nothing is written, where
	// there is no room.
	bool Add(std::uint32_t inFrame, PluginParameter const& inParameter, double inValue);
	bool Add(std::uint32_t inFrame, PluginParameter const& inParameter, std::string const& inText);

private:
	template <class WriteValue>
	bool Write(std::uint32_t inFrame, PluginParameter const& inParameter, std::size_t inValueBytes,
		WriteValue const& inWriteValue);
	void WriteNumber(LV2_URID inType, double inValue);

	std::uint8_t* mMemory;
	std::size_t mBytes;
	LV2_Atom_Forge mForge{};
	LV2_Atom_Forge_Frame mSequence{};
	LV2_URID mSet;
	LV2_URID mProperty;
	LV2_URID mValue;
};

} // namespace SonaroHost::Effects
