#include "byte_stream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include "errors.h"
#include "interrupt.h"

namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 16U;
constexpr std::size_t kFileWriteBytes = std::size_t{1} << 20U;
// A pipe that polls as writable takes this much without blocking.
constexpr std::size_t kPipeWriteBytes = PIPE_BUF;

class FileDescriptor {
  public:
    explicit FileDescriptor(const std::string& path)
        : fd(path == kStandardStream ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~FileDescriptor() {
        if (fd > STDERR_FILENO) {
            close(fd);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    const int fd;
};

[[noreturn]] void failReading(const std::string& path) {
    throw UserError("cannot read " + (path == kStandardStream ? "standard input" : path) + ": " +
                    std::strerror(errno) + "; give a readable file");
}

std::size_t writePieceOf(int fd) {
    struct stat status {};
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode) ? kFileWriteBytes : kPipeWriteBytes;
}

}  // namespace

Bytes readAll(const std::string& path) {
    const FileDescriptor file(path);
    if (file.fd < 0) {
        failReading(path);
    }
    Bytes bytes;
    for (;;) {
        waitUntilReady(file.fd, POLLIN);
        const std::size_t size = bytes.size();
        bytes.resize(size + kReadBytes);
        const ssize_t got = read(file.fd, bytes.data() + size, kReadBytes);
        if (got < 0) {
            failReading(path);
        }
        bytes.resize(size + static_cast<std::size_t>(got));
        if (got == 0) {
            return bytes;
        }
    }
}

void writeAll(int fd, const Bytes& bytes, const std::string& name) {
    const std::size_t piece = writePieceOf(fd);
    for (std::size_t done = 0; done < bytes.size();) {
        waitUntilReady(fd, POLLOUT);
        const ssize_t put = write(fd, bytes.data() + done, std::min(piece, bytes.size() - done));
        if (put < 0) {
            throw UserError("cannot write " + name + ": " + std::strerror(errno) +
                            "; choose another place for the output");
        }
        done += static_cast<std::size_t>(put);
    }
}
