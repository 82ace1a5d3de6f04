#include "Fuzzing.h"
#include "Serve/CommentFile.h"

using namespace SonaroFuzzing;
using SonaroCommand::Json;
using SonaroCommand::Serve::CommentFile;

// The file of comments as another program may have written it. Changes go through, or leave it as it was.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize)
{
	std::string_view const bytes = AsText(inData, inSize);
	WriteInput("edit.otio.comments.json", bytes);
	CommentFile comments(GetFolder() / "edit.otio");
	Try(
		[&]
		{
			std::size_t const count = comments.List().size();
			Json const added = comments.Add({{"sample", 48000}, {"text", "a word"}});
			Require(comments.List().size() == count + 1);
			Require(comments.Change(added["id"], {{"text", "another"}}).has_value());
			Require(comments.Remove(added["id"]) && comments.List().size() == count);
		});
	// A comment that a page sends.
	Try(
		[&]
		{
			std::filesystem::remove(comments.GetPath());
			Json const given = Json::parse(bytes, nullptr, false);
			comments.Add(given);
			Require(comments.List().size() == 1);
		});
	return 0;
}
