#pragma once

#include "zorvcore/config/Exceptions.h"

namespace SN
{

// A mix renderer lacks a generator or its processor.
class ZORV_API AudioMixRendererCreateFailure : public zorvcore::config::zorv_exception
{
public:
	AudioMixRendererCreateFailure(char const* inFile, int inLine)
		: zorv_exception(inFile, inLine, zorvcore::eUnspecifiedFailure, "CreateAudioMixRenderer failed")
	{
	}
};

} // namespace SN
