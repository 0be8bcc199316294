// The files that a run leaves behind: all of them or none. Contents are gathered in memory, written
// to temporary files beside their targets and renamed at the end, so neither an error nor an
// interrupt leaves a half-written file or touches an old one.
#pragma once

#include <string>
#include <vector>

#include "byte_stream.h"

class OutputFiles {
  public:
    // Refuses a target that cannot be written before any work is done for it.
    static void checkTarget(const std::string& path);
    // The same for a folder that will be made when it is missing. One that holds files is refused
    // unless `mayHoldFiles`.
    static void checkFolder(const std::string& path, bool mayHoldFiles);
    // Standard output, a device or a pipe: what is written there bears no name that tells its form.
    static bool isStream(const std::string& path);

    // `path` may be "-", for standard output.
    void add(const std::string& path, Bytes bytes);
    // Makes the folder, unless it is there, before the files are written.
    void addFolder(const std::string& path);
    void commit();

  private:
    struct File {
        std::string path;
        Bytes bytes;
    };
    std::vector<File> m_files;
    std::vector<std::string> m_folders;
};
