#include "CommentFile.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Files/WholeFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace SonaroCommand::Serve
{

using SonaroHost::Refuse;
using SonaroHost::RefuseFile;

namespace
{

constexpr int kCommentsVersion = 1;
constexpr std::size_t kMostComments = 10000;
constexpr std::size_t kMostTextBytes = 4000;
constexpr std::uintmax_t kMostFileBytes = 64 << 20;
// Fifty hours at the highest rate.
constexpr std::int64_t kLastSample = std::int64_t{1} << 38;

bool IsComment(Json const& inJson)
{
	return inJson.is_object() && inJson.contains("id") && inJson["id"].is_number_unsigned() &&
		   inJson.contains("sample") && inJson["sample"].is_number_integer() && inJson.contains("text") &&
		   inJson["text"].is_string();
}

// Takes over what is given.
void Fill(Json& ioComment, Json const& inGiven)
{
	if (!inGiven.is_object())
	{
		Refuse("a comment is an object with \"sample\" and \"text\"");
	}
	if (auto const sample = inGiven.find("sample"); sample != inGiven.end())
	{
		bool const isNumber = sample->is_number_integer() && *sample >= 0 && *sample <= kLastSample;
		if (!isNumber)
		{
			Refuse("\"sample\" of a comment is a whole number from 0 on");
		}
		ioComment["sample"] = *sample;
	}
	if (auto const text = inGiven.find("text"); text != inGiven.end())
	{
		constexpr char const* kBlanks = " \t\r\n";
		bool const isText =
			text->is_string() &&
			text->get_ref<std::string const&>().find_first_not_of(kBlanks) != std::string::npos &&
			text->get_ref<std::string const&>().size() <= kMostTextBytes;
		if (!isText)
		{
			Refuse("\"text\" of a comment has 1 to " + std::to_string(kMostTextBytes) +
				   " bytes that are not all blank");
		}
		ioComment["text"] = *text;
	}
	if (!IsComment(ioComment))
	{
		Refuse("a comment needs \"sample\" and \"text\"");
	}
}

auto FindComment(Json& ioFile, std::uint64_t inId)
{
	Json& comments = ioFile["comments"];
	return std::find_if(
		comments.begin(), comments.end(), [inId](Json const& inComment) { return inComment["id"] == inId; });
}

std::filesystem::path MakeCommentPath(std::filesystem::path const& inTimeline)
{
	// A bundle's folder may end in a slash.
	std::filesystem::path path = inTimeline.has_filename() ? inTimeline : inTimeline.parent_path();
	return path += ".comments.json";
}

} // namespace

// Keeps other threads, and other processes that do the same, from a change in between. Where the file system has no locks,
// threads alone.
class CommentFile::Lock
{
public:
	explicit Lock(CommentFile& ioFile)
		: mThreads(ioFile.mMutex),
		  mFolder(::open((ioFile.mPath.parent_path() / ".").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
	{
		constexpr int kTrials = 250;
		constexpr auto kPause = std::chrono::milliseconds(20);
		for (int trial = 0; mFolder >= 0 && ::flock(mFolder, LOCK_EX | LOCK_NB) != 0; ++trial)
		{
			if (errno != EWOULDBLOCK && errno != EINTR)
			{
				return;
			}
			if (trial == kTrials)
			{
				::close(mFolder);
				SonaroHost::RefuseOutput(SonaroHost::QuotePath(ioFile.mPath) +
										 " is being changed by another program; try again later");
			}
			std::this_thread::sleep_for(kPause);
		}
	}
	~Lock()
	{
		if (mFolder >= 0)
		{
			::close(mFolder);
		}
	}
	Lock(Lock const&) = delete;
	Lock& operator=(Lock const&) = delete;

private:
	std::lock_guard<std::mutex> mThreads;
	int mFolder;
};

CommentFile::CommentFile(std::filesystem::path const& inTimeline)
	: mPath(MakeCommentPath(inTimeline))
{
}

Json CommentFile::List()
{
	std::lock_guard const lock(mMutex);
	Json comments = Read()["comments"];
	std::stable_sort(comments.begin(), comments.end(),
		[](Json const& inA, Json const& inB) { return inA["sample"] < inB["sample"]; });
	return comments;
}

Json CommentFile::Add(Json const& inComment)
{
	Lock const lock(*this);
	Json file = Read();
	if (file["comments"].size() >= kMostComments)
	{
		Refuse("there are " + std::to_string(kMostComments) + " comments already; remove some");
	}
	std::uint64_t last = 0;
	for (Json const& comment : file["comments"])
	{
		last = std::max(last, comment["id"].get<std::uint64_t>());
	}
	Json comment{{"id", last + 1}};
	Fill(comment, inComment);
	file["comments"].push_back(comment);
	Write(file);
	return comment;
}

std::optional<Json> CommentFile::Change(std::uint64_t inId, Json const& inComment)
{
	Lock const lock(*this);
	Json file = Read();
	auto const found = FindComment(file, inId);
	if (found == file["comments"].end())
	{
		return std::nullopt;
	}
	Fill(*found, inComment);
	Write(file);
	return *found;
}

bool CommentFile::Remove(std::uint64_t inId)
{
	Lock const lock(*this);
	Json file = Read();
	auto const found = FindComment(file, inId);
	if (found == file["comments"].end())
	{
		return false;
	}
	file["comments"].erase(found);
	Write(file);
	return true;
}

Json CommentFile::Read() const
{
	std::error_code error;
	if (!std::filesystem::exists(mPath, error))
	{
		return {{"version", kCommentsVersion}, {"comments", Json::array()}};
	}
	constexpr char const* kRemedy = "correct it, or move it away";
	if (std::filesystem::file_size(mPath, error) > kMostFileBytes || error)
	{
		RefuseFile(mPath, "cannot be read as comments", kRemedy);
	}
	Json file = Json::parse(SonaroHost::ReadWholeFile(mPath, kRemedy), nullptr, false);
	bool const isList = file.is_object() && file.contains("comments") && file["comments"].is_array();
	if (!isList)
	{
		RefuseFile(mPath, "is no JSON with a list \"comments\"", kRemedy);
	}
	for (std::size_t i = 0; i < file["comments"].size(); ++i)
	{
		if (!IsComment(file["comments"][i]))
		{
			throw SonaroHost::HostError(SonaroHost::HostError::Kind::kInput,
				{mPath, "/comments/" + std::to_string(i), "needs \"id\", \"sample\" and \"text\"", kRemedy});
		}
	}
	return file;
}

void CommentFile::Write(Json const& inFile) const
{
	std::string const text = ToText(inFile);
	SonaroHost::OutputFile file(mPath);
	file.Write(text.data(), static_cast<std::int64_t>(text.size()));
	file.Commit();
}

} // namespace SonaroCommand::Serve
