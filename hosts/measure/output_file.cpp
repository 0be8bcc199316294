#include "output_file.h"

#include <stdexcept>

OutputFile::OutputFile(const std::string& name) : m_name(name) {
    if (!name.empty()) {
        m_stream.open(name, std::ios::binary);
        if (!m_stream) {
            throw std::runtime_error("cannot write " + name + "; choose another place for it");
        }
    }
}

void OutputFile::write(const std::string& text) {
    if (!m_name.empty()) {
        m_stream << text << std::flush;
        if (!m_stream) {
            throw std::runtime_error("cannot write " + m_name + "; make room for it");
        }
    }
}
