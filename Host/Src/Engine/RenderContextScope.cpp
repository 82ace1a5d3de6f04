#include "SonaroHost/Engine/RenderContextScope.h"

#include "Sonaro/SonaroFactory.h"
#include "SonaroHost/Base/HostError.h"

#include <array>
#include <cstdio>

namespace SonaroHost
{

void CheckEngineResult(int inResult, std::string const& inWhat)
{
	if (!SN::ResultSucceeded(inResult))
	{
		std::array<char, 16> code{};
		std::snprintf(code.data(), code.size(), "0x%08X", static_cast<unsigned>(inResult));
		throw HostError(HostError::Kind::eEngine,
			"the render engine refused to make " + inWhat + " (result " + code.data() + ")");
	}
}

RenderContextScope::RenderContextScope(unsigned inBlockFrames, SN::TickTime const& inRangeEnd,
	SN::ImmutableString const& inName, SN::Prefetcher* inPrefetcher)
{
	constexpr bool kContextOption = false;
	// Meters are not in use.
	SN::TickTime const meterInterval;
	int const result = SN::SonaroFactory::CreateClassRef()->CreateAudioRenderContext(inBlockFrames,
		inPrefetcher != nullptr, kContextOption, SN::kTimeZero, inRangeEnd, kControlInterval, meterInterval,
		inPrefetcher, inName, false, false, false, false, SN::RenderQuality::kMaximum, &mContext);
	CheckEngineResult(result, "a render context");
}

RenderContextScope::~RenderContextScope()
{
	mContext->Clear();
}

} // namespace SonaroHost
