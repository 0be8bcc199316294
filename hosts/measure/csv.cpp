#include "csv.h"

#include <sstream>

namespace {

// A photograph's name may be any that a file can have.
std::string quoted(const std::string& field) {
    if (field.find_first_of(",\"\r\n") == std::string::npos) {
        return field;
    }
    std::string text = "\"";
    for (const char letter : field) {
        text += letter == '"' ? std::string("\"\"") : std::string(1, letter);
    }
    return text + '"';
}

}  // namespace

std::string csvHeading() {
    return "photograph,method,start,strokes,error,iou,milliseconds\n";
}

std::string csvOf(const std::vector<RobotResult>& results, RobotStart start) {
    std::ostringstream csv;
    csv << std::fixed;
    for (const RobotResult& result : results) {
        csv << quoted(result.photo) << ',' << result.method << ',' << nameOf(start) << ','
            << result.strokes << ',';
        csv.precision(6);
        csv << result.score.errorRate << ',' << result.score.iou << ',';
        csv.precision(1);
        if (result.milliseconds) {
            csv << *result.milliseconds;
        }
        csv << '\n';
    }
    return csv.str();
}
