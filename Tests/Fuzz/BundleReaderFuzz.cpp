#include "Fuzzing.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"

using namespace SonaroFuzzing;

// Archives as .otioz; what does not begin as one is the content of an .otiod folder. Media are looked for and opened, as for
// a render.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize)
{
	std::string_view const bytes = AsText(inData, inSize);
	std::filesystem::path path;
	if (bytes.starts_with("PK"))
	{
		path = WriteInput("edit.otioz", bytes);
	}
	else
	{
		path = GetFolder() / "edit.otiod";
		std::filesystem::create_directories(path / "media");
		WriteInput("edit.otiod/content.otio", bytes);
	}
	Try(
		[&path]
		{
			SonaroHost::Otio::TimelineInput input(path);
			input.ListMedia();
			Require(input.MakeSequence().mDescription != nullptr);
		});
	return 0;
}
