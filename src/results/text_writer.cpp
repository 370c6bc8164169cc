#include "results/text_writer.h"

#include <cstring>
#include <utility>
#include <vector>

#include "platform/memory.h"
#include "run/warnings.h"

namespace kaldra {

namespace {

constexpr std::size_t bufferSize = 1050;
constexpr std::size_t gatheredBelow = 996;  // a line joins the block while both together are shorter

// What the writer keeps between calls.
struct WriterState {
    bool writerReady = false;
    std::vector<char> writeBuffer;  // gathered text
    std::size_t gathered = 0;       // characters of writeBuffer in use
};

WriterState writer;

void ReleaseBuffers() {
    std::vector<char>().swap(writer.writeBuffer);
    writer.gathered = 0;
    writer.writerReady = false;
}

[[nodiscard]] bool MakeBuffers(const File& file) {
    if (writer.writerReady) return true;
    if (!MakeTable(writer.writeBuffer, bufferSize)) {
        WarnOfBrokenFile(file.Path());
        return false;
    }
    writer.gathered = 0;
    writer.writerReady = true;
    return true;
}

int FailWriting(const File& file) {
    ReleaseBuffers();
    WarnOfBrokenFile(file.Path());
    ShowError(1192);
    return -1;
}

// Half a block on the disk is a failure as well.
[[nodiscard]] bool WriteWhole(File& file, std::string_view bytes) {
    return file.Write(bytes) == static_cast<std::int64_t>(bytes.size());
}

[[nodiscard]] bool Flush(File& file) {
    const std::size_t length = std::exchange(writer.gathered, 0);
    return length == 0 || WriteWhole(file, {writer.writeBuffer.data(), length});
}

void Gather(std::string_view text) {
    std::memcpy(writer.writeBuffer.data() + writer.gathered, text.data(), text.size());
    writer.gathered += text.size();
}

}  // namespace

int WriteBuffered(File& file, std::string_view text) {
    if (!MakeBuffers(file)) return -1;
    if (writer.gathered + text.size() >= gatheredBelow && !Flush(file)) return FailWriting(file);
    if (text.size() < gatheredBelow) {
        Gather(text);
        Gather(lineEnd);
        return 1;
    }
    return WriteWhole(file, text) && WriteWhole(file, lineEnd) ? 1 : FailWriting(file);
}

// Few lines join the block; many are written as they are, behind it.
int WriteBufferedLines(File& file, std::string_view lines) {
    if (!MakeBuffers(file)) return -1;
    if (lines.empty()) return 1;
    if (writer.gathered + lines.size() < gatheredBelow) {
        Gather(lines);
        return 1;
    }
    return Flush(file) && WriteWhole(file, lines) ? 1 : FailWriting(file);
}

void DropBufferedLines() { ReleaseBuffers(); }

int WriteBuffered(File& file, ClearBuf) {
    if (!MakeBuffers(file)) return -1;
    if (!Flush(file)) return FailWriting(file);
    ReleaseBuffers();
    return 1;
}

}  // namespace kaldra
