#pragma once

#include "Report/Json.h"

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

namespace SonaroCommand::Serve
{

// Comments at samples of a programme, in a JSON file of their own beside the timeline: "edit.otio.comments.json". It is
// read before each change and replaced as a whole, so that comments of other programs stay; one that cannot be read is
// left alone. Several servers of one timeline change it one at a time, by a lock on its folder.
//
// Errors   HostErrors: kRequest for a comment that is not valid, kInput for a file that is not, kOutput where it cannot be
//          written.
// Threads  Any.
class CommentFile
{
public:
	// inTimeline: whose they are.
	explicit CommentFile(std::filesystem::path const& inTimeline);

	std::filesystem::path const& GetPath() const { return mPath; }

	// All, in the order of their samples: objects with "id", "sample" and "text".
	Json List();
	// inComment: its "sample", from 0 on, and "text". Returns it with its new id.
	Json Add(Json const& inComment);
	// Replaces "sample" and "text" where they are given. Nothing when there is no such comment.
	std::optional<Json> Change(std::uint64_t inId, Json const& inComment);
	bool Remove(std::uint64_t inId);

private:
	class Lock;

	Json Read() const;
	void Write(Json const& inFile) const;

	std::filesystem::path mPath;
	std::mutex mMutex;
};

} // namespace SonaroCommand::Serve
