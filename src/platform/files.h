// The one seam between the program and the file system.
//
// Every open, read, write, seek, close, copy, delete and listing of the engine passes here, where a test can make any
// of them fail. A call that fails notes the system's error number, which the next message box takes for its caption.
// Paths are bytes and mean exactly what they say: no character is a wildcard.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kaldra {

// An open file, closed at the latest when it goes out of scope.
class File {
public:
    File() = default;
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // Opens a regular file for reading.
    [[nodiscard]] bool OpenForReading(const std::string& path);
    // Creates an empty file for writing, in place of any older one.
    [[nodiscard]] bool Create(const std::string& path);
    // Opens an existing file for writing and leaves its content alone.
    [[nodiscard]] bool OpenForAppending(const std::string& path);
    [[nodiscard]] bool SeekToStart();
    [[nodiscard]] bool SeekToEnd();
    // Gives the number of bytes read, short only at the end of the file; -1 after a failure.
    [[nodiscard]] std::int64_t Read(std::span<char> block);
    // Gives the number of bytes written, fewer than asked for after a failure.
    [[nodiscard]] std::int64_t Write(std::string_view bytes);
    [[nodiscard]] bool Close();
    // The path of the last opening.
    [[nodiscard]] const std::string& Path() const { return path_; }
    // Length of the file in bytes as it was at OpenForReading.
    [[nodiscard]] std::int64_t Size() const { return size_; }

private:
    [[nodiscard]] bool Open(const std::string& path, int flags);
    [[nodiscard]] bool Seek(int whence);

    int descriptor_ = -1;
    std::int64_t size_ = 0;
    std::string path_;
};

// An advisory lock on a file. It keeps nobody from reading or writing; it tells one process that another has it, and
// vanishes with its holder, however that ends.
//
// It is flock: it needs no more than the right to read, unlike a write lock of fcntl, and it belongs to the open
// descriptor, so that the file may be opened, read and closed again elsewhere in the process without losing it.
class FileLock {
public:
    FileLock() = default;
    ~FileLock() { Release(); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // Impossible: the file cannot be opened, or its file system knows no locks.
    enum class Result { Held, HeldElsewhere, Impossible };
    // Does not wait. A lock that is held already stays as it is.
    [[nodiscard]] Result Take(const std::string& path);
    void Release();

private:
    int descriptor_ = -1;
};

// Handed over in place of a line, ends a stream of the line reader or of the buffered writer. It is a type of its own,
// so that no text of a file can be taken for it.
struct ClearBuf {};
inline constexpr ClearBuf clearbuf;

[[nodiscard]] bool FileExists(const std::string& path);
[[nodiscard]] bool DeleteFile(const std::string& path);
// The same for a file that need not be there. Asking first would take a file that cannot be looked at for none.
[[nodiscard]] bool DeleteFileIfThere(const std::string& path);
// Gives a file another name in its file system, in place of any older file of that name; others see the one or the
// other.
[[nodiscard]] bool RenameFile(const std::string& from, const std::string& to);
// True if `path` was written to later than `other`; false where that cannot be told.
[[nodiscard]] bool IsNewerThan(const std::string& path, const std::string& other);
// When a file was last written to, and how long it is: equal stamps tell that it stayed as it was. Zeros: there is
// none.
struct FileStamp {
    std::int64_t seconds = 0, nanoseconds = 0, size = 0;
    bool operator==(const FileStamp&) const = default;
};
[[nodiscard]] FileStamp StampOf(const std::string& path);
// Copies a file's bytes over `to`, in place of any older file.
[[nodiscard]] bool CopyFile(const std::string& from, const std::string& to);
// The same for a file that need not be there.
[[nodiscard]] bool CopyFileIfThere(const std::string& from, const std::string& to);
// Names, without folder and in rising order, of the entries of `folder` that begin with `prefix`. None where it cannot
// be read. An empty folder is the working folder.
[[nodiscard]] std::vector<std::string> ListFiles(const std::string& folder, std::string_view prefix);

// The system's error number of the last failed call of this thread, 0 if none failed since it was last taken.
[[nodiscard]] int TakeLastSystemError();

}  // namespace kaldra
