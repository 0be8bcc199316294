// A text file that the program writes. It is opened before the work, which may take an hour, so
// that a name that cannot be written is told at once.
#pragma once

#include <fstream>
#include <string>

class OutputFile {
  public:
    // An empty name: nothing is written. Throws std::runtime_error when the file cannot be opened.
    explicit OutputFile(const std::string& name);

    // Adds to the file at once. Throws std::runtime_error when that fails.
    void write(const std::string& text);

  private:
    std::string m_name;
    std::ofstream m_stream;
};
