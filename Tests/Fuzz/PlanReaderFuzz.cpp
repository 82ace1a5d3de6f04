#include "Fuzzing.h"
#include "SonaroHost/Render/FarmPlan.h"

using namespace SonaroFuzzing;

// Plans of renders in pieces. What is read is written the same again.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize)
{
	std::filesystem::path const path = WriteInput("plan.json", AsText(inData, inSize));
	Try(
		[&path]
		{
			SonaroHost::FarmPlan const plan = SonaroHost::ReadFarmPlan(path);
			Require(!plan.mPieces.empty());
			std::string const text = ToText(plan);
			SonaroHost::FarmPlan const again = SonaroHost::ReadFarmPlan(WriteInput("again.json", text));
			Require(ToText(again) == text && GetIdentity(again) == GetIdentity(plan));
		});
	return 0;
}
