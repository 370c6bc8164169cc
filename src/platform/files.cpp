#include "platform/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "platform/faults.h"

namespace kaldra {

static thread_local int lastSystemError = 0;

static bool Failed(int error) {
    lastSystemError = error;
    return false;
}

// True when a test wants this call to fail.
static bool Rehearsed(std::string_view name, const std::string& path) {
    if (!FaultStrikes(FaultSeam::FileCall, name, path)) return false;
    lastSystemError = EIO;
    return true;
}

int TakeLastSystemError() { return std::exchange(lastSystemError, 0); }

File::~File() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

bool File::Open(const std::string& path, int flags) {
    if (Rehearsed("open", path)) return false;
    if (descriptor_ >= 0) return Failed(EBUSY);
    path_ = path;
    do {
        descriptor_ = ::open(path.c_str(), flags | O_CLOEXEC, 0666);
    } while (descriptor_ < 0 && errno == EINTR);
    return descriptor_ >= 0 || Failed(errno);
}

bool File::OpenForReading(const std::string& path) {
    // O_NONBLOCK: a pipe without a writer must not hang the program; it is refused below.
    if (!Open(path, O_RDONLY | O_NONBLOCK)) return false;
    struct stat status {};
    if (::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
        size_ = status.st_size;
        return true;
    }
    ::close(std::exchange(descriptor_, -1));
    return Failed(EINVAL);
}

// O_NONBLOCK: a pipe that nobody reads fails here, too.
bool File::Create(const std::string& path) { return Open(path, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK); }

bool File::OpenForAppending(const std::string& path) { return Open(path, O_WRONLY); }

bool File::Seek(int whence) {
    if (Rehearsed("seek", path_)) return false;
    return ::lseek(descriptor_, 0, whence) >= 0 || Failed(errno);
}

bool File::SeekToStart() { return Seek(SEEK_SET); }

bool File::SeekToEnd() { return Seek(SEEK_END); }

std::int64_t File::Read(std::span<char> block) {
    if (Rehearsed("read", path_)) return -1;
    std::size_t filled = 0;
    while (filled < block.size()) {
        const ssize_t count = ::read(descriptor_, block.data() + filled, block.size() - filled);
        if (count == 0) break;
        if (count > 0) {
            filled += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            Failed(errno);
            return -1;
        }
    }
    return static_cast<std::int64_t>(filled);
}

std::int64_t File::Write(std::string_view bytes) {
    if (Rehearsed("write", path_)) return 0;
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(descriptor_, bytes.data() + written, bytes.size() - written);
        if (count > 0) {
            written += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            Failed(count == 0 ? ENOSPC : errno);
            break;
        }
    }
    return static_cast<std::int64_t>(written);
}

bool File::Close() {
    const bool rehearsed = Rehearsed("close", path_);
    const int result = ::close(std::exchange(descriptor_, -1));
    if (rehearsed) return false;
    return result == 0 || Failed(errno);
}

// Gives the system's error number, 0 for none.
static int Lock(int descriptor) {
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR) return errno;
    }
    return 0;
}

// A network file system may ask for the right to write before it locks; only there is the file opened so.
FileLock::Result FileLock::Take(const std::string& path) {
    if (descriptor_ >= 0) return Result::Held;
    if (Rehearsed("lock", path)) return Result::Impossible;
    int error = 0;
    for (const int access : {O_RDONLY, O_RDWR}) {
        descriptor_ = ::open(path.c_str(), access | O_NONBLOCK | O_CLOEXEC);
        if (descriptor_ < 0) break;
        error = Lock(descriptor_);
        if (error == 0) return Result::Held;
        Release();
        if (error != EBADF) break;
    }
    return error == EWOULDBLOCK ? Result::HeldElsewhere : Result::Impossible;
}

void FileLock::Release() {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

bool FileExists(const std::string& path) {
    if (Rehearsed("exists", path)) return false;
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

bool DeleteFile(const std::string& path) {
    if (Rehearsed("delete", path)) return false;
    return ::unlink(path.c_str()) == 0 || Failed(errno);
}

// True when the last call failed because its file is not there, which its caller takes as it comes.
static bool WasNotThere() {
    if (lastSystemError != ENOENT) return false;
    lastSystemError = 0;
    return true;
}

bool DeleteFileIfThere(const std::string& path) { return DeleteFile(path) || WasNotThere(); }

bool IsNewerThan(const std::string& path, const std::string& other) {
    if (Rehearsed("times", path)) return false;
    struct stat a {};
    struct stat b {};
    if (::stat(path.c_str(), &a) != 0 || ::stat(other.c_str(), &b) != 0) return false;
    return std::pair(a.st_mtim.tv_sec, a.st_mtim.tv_nsec) > std::pair(b.st_mtim.tv_sec, b.st_mtim.tv_nsec);
}

FileStamp StampOf(const std::string& path) {
    struct stat status {};
    if (Rehearsed("times", path) || ::stat(path.c_str(), &status) != 0) return {};
    return {status.st_mtim.tv_sec, status.st_mtim.tv_nsec, status.st_size};
}

bool RenameFile(const std::string& from, const std::string& to) {
    if (Rehearsed("rename", from)) return false;
    return std::rename(from.c_str(), to.c_str()) == 0 || Failed(errno);
}

bool CopyFile(const std::string& from, const std::string& to) {
    if (Rehearsed("copy", to)) return false;
    std::error_code error;
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, error);
    return !error || Failed(error.value());
}

bool CopyFileIfThere(const std::string& from, const std::string& to) { return CopyFile(from, to) || WasNotThere(); }

// Not by std::filesystem::directory_iterator, which ends the process where memory is short.
std::vector<std::string> ListFiles(const std::string& folder, std::string_view prefix) {
    std::vector<std::string> names;
    if (Rehearsed("list", folder)) return names;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.empty() ? "." : folder.c_str()), ::closedir);
    if (!entries) Failed(errno);
    while (entries) {
        errno = 0;
        const dirent* const entry = ::readdir(entries.get());
        if (entry == nullptr && errno != 0) Failed(errno);
        if (entry == nullptr) break;
        const std::string_view name = entry->d_name;
        if (name != "." && name != ".." && name.starts_with(prefix)) names.emplace_back(name);
    }
    std::ranges::sort(names);
    return names;
}

}  // namespace kaldra
