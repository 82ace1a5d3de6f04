// A file system that passes a folder through and fails when it is asked to; Scripts/try-disk.py builds and mounts it.
//
//   faulty_folder FOLDER MOUNTPOINT     in the foreground, until its standard input ends
//
// Lines on the standard input, each of which is answered by one line:
//
//   set KIND N    counts calls from 0 on, and fails at the Nth call that the kind is about:
//                   none      never
//                   eio       that call alone, with EIO
//                   broken    that call and all later ones, with EIO
//                   enospc    that call and all later ones that need room
//                   eintr     that call alone, with EINTR
//                   short     that call and all later reads and writes transfer one byte or half of what they are asked for
//                   shrink    that read finds its file cut to a half
//                   vanish    that read finds its file removed, and this and all later ones of it end with ESTALE
//                   slow      that read and all later ones take 20 ms
//                   hang      that read waits until the next line
//   report        the number of calls that the kind is about, and the operation and the path of the call that failed

#define FUSE_USE_VERSION 31
#include <fuse.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <thread>

namespace
{

enum class Operation
{
	kOpen,
	kCreate,
	kRead,
	kWrite,
	kSync,
	kClose,
	kRename,
	kResize,
	kList,
	kMakeFolder,
};

constexpr char const* kOperationNames[] = {
	"open", "create", "read", "write", "sync", "close", "rename", "resize", "list", "mkdir"};

bool NeedsRoom(Operation inOperation)
{
	return inOperation == Operation::kCreate || inOperation == Operation::kWrite ||
		   inOperation == Operation::kResize || inOperation == Operation::kMakeFolder ||
		   inOperation == Operation::kSync || inOperation == Operation::kClose;
}

// What goes wrong, and when. Any thread.
class Faults
{
public:
	void Set(std::string inKind, std::uint64_t inAt)
	{
		std::lock_guard const lock(mMutex);
		mKind = std::move(inKind);
		mAt = inAt;
		mCalls = 0;
		mHit.clear();
		mGone.clear();
		++mEpoch;
		mChanged.notify_all();
	}

	std::string Report()
	{
		std::lock_guard const lock(mMutex);
		return std::to_string(mCalls) + (mHit.empty() ? "" : " " + mHit);
	}

	// What a call begins with: 0, or the error that it ends with.
	int Begin(Operation inOperation, std::string const& inPath)
	{
		std::unique_lock lock(mMutex);
		bool const isRead = inOperation == Operation::kRead;
		if (isRead && mGone.count(inPath) > 0)
		{
			return -ESTALE;
		}
		if (!Concerns(inOperation) || !IsTurn(++mCalls))
		{
			return 0;
		}
		if (mHit.empty())
		{
			mHit = std::string(kOperationNames[static_cast<int>(inOperation)]) + " " + inPath;
		}
		return Fail(lock, inPath);
	}

	// How much of a transfer is done.
	std::size_t Cut(std::size_t inCount)
	{
		std::lock_guard const lock(mMutex);
		bool const isShort = mKind == "short" && mCalls >= mAt && inCount > 1;
		return !isShort ? inCount : mCalls % 3 == 0 ? 1 : inCount / 2;
	}

	std::string mRoot;

private:
	bool Concerns(Operation inOperation) const
	{
		bool const isRead = inOperation == Operation::kRead;
		bool const isTransfer = isRead || inOperation == Operation::kWrite;
		return mKind == "eio" || mKind == "broken" ? true
			   : mKind == "enospc"                 ? NeedsRoom(inOperation)
			   : mKind == "short"                  ? isTransfer
			   : mKind == "eintr"                  ? isTransfer || inOperation == Operation::kOpen
												   : isRead;
	}

	bool IsTurn(std::uint64_t inCall) const
	{
		bool const goesOn = mKind == "broken" || mKind == "enospc" || mKind == "slow";
		return mKind != "none" &&
			   (inCall == mAt || (goesOn && inCall > mAt) || (mKind == "short" && inCall == mAt));
	}

	int Fail(std::unique_lock<std::mutex>& ioLock, std::string const& inPath)
	{
		std::string const real = mRoot + inPath;
		if (mKind == "shrink")
		{
			struct stat status = {};
			bool const isCut =
				::stat(real.c_str(), &status) == 0 && ::truncate(real.c_str(), status.st_size / 2) == 0;
			return isCut ? 0 : -EIO;
		}
		if (mKind == "vanish")
		{
			mGone.insert(inPath);
			::unlink(real.c_str());
			return -ESTALE;
		}
		if (mKind == "slow")
		{
			ioLock.unlock();
			std::this_thread::sleep_for(std::chrono::milliseconds(20));
			return 0;
		}
		if (mKind == "hang")
		{
			mChanged.wait(ioLock, [this, epoch = mEpoch] { return mEpoch != epoch; });
			return 0;
		}
		return mKind == "eintr" ? -EINTR : mKind == "enospc" ? -ENOSPC : mKind == "short" ? 0 : -EIO;
	}

	std::mutex mMutex;
	std::condition_variable mChanged;
	std::string mKind = "none";
	std::uint64_t mAt = 0;
	std::uint64_t mCalls = 0;
	std::uint64_t mEpoch = 0;
	std::string mHit;
	// Files that were removed while they were open.
	std::set<std::string> mGone;
};

Faults sFaults;

std::string Real(char const* inPath)
{
	return sFaults.mRoot + (inPath ? inPath : "/removed");
}

int Result(int inReturned)
{
	return inReturned < 0 ? -errno : 0;
}

// A file or a folder that is open. Calls on it come without its path.
struct Opened
{
	std::string mPath;
	int mDescriptor = -1;
};

Opened& Get(fuse_file_info const* inFile)
{
	return *reinterpret_cast<Opened*>(inFile->fh);
}

int GetDescriptor(fuse_file_info const* inFile)
{
	return Get(inFile).mDescriptor;
}

int Hold(char const* inPath, int inDescriptor, fuse_file_info* ioFile)
{
	if (inDescriptor < 0)
	{
		return -errno;
	}
	ioFile->fh = reinterpret_cast<std::uint64_t>(new Opened{inPath, inDescriptor});
	return 0;
}

void* Start(fuse_conn_info*, fuse_config* ioConfig)
{
	// Every call comes here, in the sizes in which it is made.
	ioConfig->direct_io = 1;
	ioConfig->attr_timeout = 0.0;
	ioConfig->entry_timeout = 0.0;
	ioConfig->negative_timeout = 0.0;
	ioConfig->use_ino = 1;
	// Open files that are removed are gone; calls on them come without a path.
	ioConfig->hard_remove = 1;
	ioConfig->nullpath_ok = 1;
	return nullptr;
}

int GetAttributes(char const* inPath, struct stat* outStatus, fuse_file_info* inFile)
{
	return Result(
		inFile ? ::fstat(GetDescriptor(inFile), outStatus) : ::lstat(Real(inPath).c_str(), outStatus));
}

int OpenFile(char const* inPath, fuse_file_info* ioFile)
{
	if (int const error = sFaults.Begin(Operation::kOpen, inPath))
	{
		return error;
	}
	return Hold(inPath, ::open(Real(inPath).c_str(), ioFile->flags), ioFile);
}

int CreateFile(char const* inPath, mode_t inMode, fuse_file_info* ioFile)
{
	if (int const error = sFaults.Begin(Operation::kCreate, inPath))
	{
		return error;
	}
	return Hold(inPath, ::open(Real(inPath).c_str(), ioFile->flags, inMode), ioFile);
}

int ReadFile(char const*, char* outBytes, std::size_t inCount, off_t inOffset, fuse_file_info* inFile)
{
	if (int const error = sFaults.Begin(Operation::kRead, Get(inFile).mPath))
	{
		return error;
	}
	ssize_t const count = ::pread(GetDescriptor(inFile), outBytes, sFaults.Cut(inCount), inOffset);
	return count < 0 ? -errno : static_cast<int>(count);
}

int WriteFile(char const*, char const* inBytes, std::size_t inCount, off_t inOffset, fuse_file_info* inFile)
{
	if (int const error = sFaults.Begin(Operation::kWrite, Get(inFile).mPath))
	{
		return error;
	}
	ssize_t const count = ::pwrite(GetDescriptor(inFile), inBytes, sFaults.Cut(inCount), inOffset);
	return count < 0 ? -errno : static_cast<int>(count);
}

int SyncFile(char const*, int, fuse_file_info* inFile)
{
	return sFaults.Begin(Operation::kSync, Get(inFile).mPath);
}

int FlushFile(char const*, fuse_file_info* inFile)
{
	return sFaults.Begin(Operation::kClose, Get(inFile).mPath);
}

int ReleaseFile(char const*, fuse_file_info* inFile)
{
	::close(GetDescriptor(inFile));
	delete &Get(inFile);
	return 0;
}

int RenameFile(char const* inFrom, char const* inTo, unsigned inFlags)
{
	if (int const error = sFaults.Begin(Operation::kRename, inTo))
	{
		return error;
	}
	return Result(::renameat2(AT_FDCWD, Real(inFrom).c_str(), AT_FDCWD, Real(inTo).c_str(), inFlags));
}

int ResizeFile(char const* inPath, off_t inLength, fuse_file_info* inFile)
{
	if (int const error = sFaults.Begin(Operation::kResize, inFile ? Get(inFile).mPath : inPath))
	{
		return error;
	}
	return Result(
		inFile ? ::ftruncate(GetDescriptor(inFile), inLength) : ::truncate(Real(inPath).c_str(), inLength));
}

int OpenFolder(char const* inPath, fuse_file_info* ioFile)
{
	return Hold(inPath, ::open(Real(inPath).c_str(), O_RDONLY | O_DIRECTORY), ioFile);
}

int ListFolder(
	char const*, void* ioBuffer, fuse_fill_dir_t inFill, off_t, fuse_file_info* inFile, fuse_readdir_flags)
{
	std::string const& path = Get(inFile).mPath;
	if (int const error = sFaults.Begin(Operation::kList, path))
	{
		return error;
	}
	DIR* const folder = ::opendir(Real(path.c_str()).c_str());
	if (!folder)
	{
		return -errno;
	}
	while (dirent const* const entry = ::readdir(folder))
	{
		inFill(ioBuffer, entry->d_name, nullptr, 0, fuse_fill_dir_flags{});
	}
	::closedir(folder);
	return 0;
}

int MakeFolder(char const* inPath, mode_t inMode)
{
	if (int const error = sFaults.Begin(Operation::kMakeFolder, inPath))
	{
		return error;
	}
	return Result(::mkdir(Real(inPath).c_str(), inMode));
}

fuse_operations MakeOperations()
{
	fuse_operations operations{};
	operations.init = &Start;
	operations.getattr = &GetAttributes;
	operations.open = &OpenFile;
	operations.create = &CreateFile;
	operations.read = &ReadFile;
	operations.write = &WriteFile;
	operations.fsync = &SyncFile;
	operations.flush = &FlushFile;
	operations.release = &ReleaseFile;
	operations.rename = &RenameFile;
	operations.truncate = &ResizeFile;
	operations.opendir = &OpenFolder;
	operations.readdir = &ListFolder;
	operations.releasedir = &ReleaseFile;
	operations.mkdir = &MakeFolder;
	operations.unlink = [](char const* inPath) { return Result(::unlink(Real(inPath).c_str())); };
	operations.rmdir = [](char const* inPath) { return Result(::rmdir(Real(inPath).c_str())); };
	operations.link = [](char const* inFrom, char const* inTo)
	{ return Result(::link(Real(inFrom).c_str(), Real(inTo).c_str())); };
	operations.chmod = [](char const* inPath, mode_t inMode, fuse_file_info*)
	{ return Result(::chmod(Real(inPath).c_str(), inMode)); };
	operations.utimens = [](char const* inPath, timespec const* inTimes, fuse_file_info*)
	{ return Result(::utimensat(AT_FDCWD, Real(inPath).c_str(), inTimes, 0)); };
	operations.statfs = [](char const* inPath, struct statvfs* outStatus)
	{ return Result(::statvfs(Real(inPath).c_str(), outStatus)); };
	return operations;
}

void ObeyLines()
{
	for (std::string line; std::getline(std::cin, line);)
	{
		std::istringstream words(line);
		std::string order;
		std::string kind;
		std::uint64_t at = 0;
		words >> order >> kind >> at;
		std::string const answer = sFaults.Report();
		if (order == "set")
		{
			sFaults.Set(kind, at);
		}
		std::cout << (order == "report" ? answer : "ok") << std::endl;
	}
	sFaults.Set("none", 0);
	::kill(::getpid(), SIGTERM);
}

} // namespace

int main(int inCount, char** inArguments)
{
	if (inCount != 3)
	{
		std::cerr << "usage: faulty_folder FOLDER MOUNTPOINT\n";
		return 2;
	}
	sFaults.mRoot = inArguments[1];
	std::thread(&ObeyLines).detach();
	char foreground[] = "-f";
	char* arguments[] = {inArguments[0], foreground, inArguments[2], nullptr};
	fuse_operations const operations = MakeOperations();
	return fuse_main(3, arguments, &operations, nullptr);
}
