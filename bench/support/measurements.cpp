#include "support/measurements.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <limits>

namespace {

std::string today() {
    const std::time_t now = std::time(nullptr);
    char text[sizeof("2000-01-01")];
    std::strftime(text, sizeof(text), "%Y-%m-%d", std::gmtime(&now));
    return text;
}

std::string processor() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        const auto colon = line.find(": ");
        if (line.rfind("model name", 0) == 0 && colon != std::string::npos) {
            std::string name = line.substr(colon + 2);
            std::replace(name.begin(), name.end(), ',', ' ');
            return name;
        }
    }
    return "unknown";
}

std::string commit() {
    const char* name = std::getenv("SEGCORE_BENCH_COMMIT");
    return name != nullptr ? name : "unknown";
}

// A field that may contain commas.
auto quoted(const std::string& field) {
    return std::quoted(field, '"', '"');
}

}  // namespace

double percentile(std::vector<double> values, double share) {
    if (values.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    std::sort(values.begin(), values.end());
    const double rank = std::ceil(share * static_cast<double>(values.size()));
    return values[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

ResultFile::ResultFile(const std::string& file, std::string program) {
    if (file.empty()) {
        return;
    }
    const bool fresh = !std::filesystem::exists(file) || std::filesystem::file_size(file) == 0;
    m_out.open(file, std::ios::app);
    if (!m_out) {
        throw std::runtime_error(file + ": cannot be written");
    }
    if (fresh) {
        m_out << "date,processor,commit,program,subject,megapixels,statistic,value,unit\n";
    }
    m_prefix = today() + ',' + processor() + ',' + commit() + ',' + std::move(program) + ',';
}

void ResultFile::add(const std::string& subject, double megapixels, const std::string& statistic,
                     double value, const std::string& unit) {
    if (m_out.is_open()) {
        m_out << m_prefix << quoted(subject) << ',' << megapixels << ',' << quoted(statistic) << ','
              << value << ',' << unit << std::endl;
    }
}
