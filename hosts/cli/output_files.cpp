#include "output_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <list>

#include "errors.h"
#include "interrupt.h"

namespace fs = std::filesystem;

namespace {

constexpr mode_t kNewFileMode = 0666;  // before the user's umask

[[noreturn]] void failWriting(const std::string& path) {
    throw UserError("cannot write " + path + ": " + std::strerror(errno) +
                    "; choose another place for the output");
}

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

// A device or a pipe is written in place: a rename would replace it by a file.
bool isReplaceable(const std::string& path) {
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    return !fs::exists(status) || fs::is_regular_file(status);
}

mode_t modeFor(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        return status.st_mode & 07777U;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return kNewFileMode & ~mask;
}

// A file beside its target until it replaces it; removed when it never does.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& target)
        // Through a symbolic link to what it names, or the rename would replace the link.
        : m_target(fs::weakly_canonical(target)),
          m_path(folderOf(m_target) / ("." + m_target.filename().string() + ".XXXXXX")) {
        m_fd = mkstemp(m_path.data());
        if (m_fd < 0) {
            failWriting(target);
        }
    }
    ~TemporaryFile() {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
        if (!m_renamed) {
            unlink(m_path.c_str());
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void write(const Bytes& bytes) {
        writeAll(m_fd, bytes, m_target);
        const int fd = m_fd;
        m_fd = -1;
        if (fchmod(fd, modeFor(m_target)) != 0 || ::close(fd) != 0) {
            failWriting(m_target);
        }
    }
    void rename() {
        if (std::rename(m_path.c_str(), m_target.c_str()) != 0) {
            failWriting(m_target);
        }
        m_renamed = true;
    }

  private:
    fs::path m_target;
    std::string m_path;
    int m_fd = -1;
    bool m_renamed = false;
};

// A folder made unless it is there; removed again when its files do not come about.
class NewFolder {
  public:
    explicit NewFolder(std::string path) : m_path(std::move(path)) {
        std::error_code error;
        m_made = fs::create_directory(m_path, error);
        if (error) {
            throw UserError("cannot make the folder " + m_path + ": " + error.message() +
                            "; choose another place");
        }
    }
    ~NewFolder() {
        if (m_made) {
            rmdir(m_path.c_str());
        }
    }
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;

    void keep() { m_made = false; }

  private:
    std::string m_path;
    bool m_made = false;
};

void writeInPlace(const std::string& path, const Bytes& bytes) {
    if (path == kStandardStream) {
        writeAll(STDOUT_FILENO, bytes, "standard output");
        return;
    }
    const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) {
        failWriting(path);
    }
    try {
        writeAll(fd, bytes, path);
    } catch (...) {
        ::close(fd);
        throw;
    }
    ::close(fd);
}

}  // namespace

void OutputFiles::checkTarget(const std::string& path) {
    if (path == kStandardStream) {
        return;
    }
    std::error_code ignored;
    if (fs::is_directory(path, ignored)) {
        throw UserError("cannot write " + path + ": it is a folder; name a file");
    }
    if (access(folderOf(path).c_str(), W_OK) != 0) {
        failWriting(path);
    }
}

void OutputFiles::checkFolder(const std::string& path, bool mayHoldFiles) {
    std::error_code ignored;
    if (fs::is_directory(path, ignored)) {
        if (!mayHoldFiles && fs::directory_iterator(path, ignored) != fs::directory_iterator()) {
            throw UserError("the folder " + path +
                            " holds files already; name another one, or write among them by "
                            "--force");
        }
        return;
    }
    if (fs::exists(path, ignored)) {
        throw UserError("cannot write to " + path + ": it is not a folder; name a folder");
    }
    const fs::path folder(path);
    checkTarget(folder.has_filename() ? path : folder.parent_path().string());
}

bool OutputFiles::isStream(const std::string& path) {
    return path == kStandardStream || !isReplaceable(path);
}

void OutputFiles::add(const std::string& path, Bytes bytes) {
    m_files.push_back({path, std::move(bytes)});
}

void OutputFiles::addFolder(const std::string& path) {
    m_folders.push_back(path);
}

void OutputFiles::commit() {
    std::list<NewFolder> folders;  // outlives its files
    for (const std::string& folder : m_folders) {
        folders.emplace_back(folder);
    }
    std::list<TemporaryFile> finished;
    for (const File& file : m_files) {
        if (!isStream(file.path)) {
            finished.emplace_back(file.path).write(file.bytes);
        }
    }
    for (const File& file : m_files) {
        if (isStream(file.path)) {
            writeInPlace(file.path, file.bytes);
        }
    }
    throwIfInterrupted();
    for (TemporaryFile& file : finished) {
        file.rename();
    }
    for (NewFolder& folder : folders) {
        folder.keep();
    }
}
