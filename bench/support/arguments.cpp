#include "support/arguments.h"

#include <algorithm>
#include <stdexcept>

Arguments::Arguments(int count, char** arguments) : m_rest(arguments + 1, arguments + count) {}

std::string Arguments::text(const std::string& name, const std::string& otherwise) {
    const auto found = std::find(m_rest.begin(), m_rest.end(), name);
    if (found == m_rest.end()) {
        return otherwise;
    }
    if (found + 1 == m_rest.end()) {
        throw std::runtime_error(name + " needs a value");
    }
    const std::string value = found[1];
    m_rest.erase(found, found + 2);
    return value;
}

double Arguments::number(const std::string& name, double otherwise) {
    const std::string value = text(name, "");
    if (value.empty()) {
        return otherwise;
    }
    std::size_t used = 0;
    double result = 0.0;
    try {
        result = std::stod(value, &used);
    } catch (const std::logic_error&) {
        used = 0;
    }
    if (used != value.size()) {
        throw std::runtime_error(name + ": '" + value + "' is not a number");
    }
    return result;
}

bool Arguments::flag(const std::string& name) {
    const auto found = std::find(m_rest.begin(), m_rest.end(), name);
    const bool present = found != m_rest.end();
    if (present) {
        m_rest.erase(found);
    }
    return present;
}

void Arguments::requireAllTaken() const {
    if (!m_rest.empty()) {
        throw std::runtime_error("'" + m_rest.front() + "' is not understood");
    }
}
