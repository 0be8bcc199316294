#include "session/json_fields.h"

#include <algorithm>
#include <cstdint>

#include "session/errors.h"

using Json = nlohmann::ordered_json;

JsonFields::JsonFields(const Json& object, std::string name)
    : m_object(object), m_name(std::move(name)) {
    if (!object.is_object()) {
        fail("is not an object in braces");
    }
}

const Json& JsonFields::at(const char* key) const {
    if (!has(key)) {
        fail(std::string("lacks \"") + key + "\"");
    }
    return m_object.at(key);
}

std::string JsonFields::text(const char* key) const {
    const Json& value = at(key);
    if (!value.is_string()) {
        fail(std::string("\"") + key + "\" is not a string");
    }
    return value.get<std::string>();
}

double JsonFields::number(const char* key) const {
    const Json& value = at(key);
    if (!value.is_number()) {
        fail(std::string("\"") + key + "\" is not a number");
    }
    return value.get<double>();
}

int JsonFields::pixels(const char* key) const {
    return pixelsIn(at(key), key);
}

bool JsonFields::flag(const char* key) const {
    const Json& value = at(key);
    if (!value.is_boolean()) {
        fail(std::string("\"") + key + "\" is neither true nor false");
    }
    return value.get<bool>();
}

std::vector<int> JsonFields::row(const Json& values, std::size_t width, const char* key) const {
    if (!values.is_array() || values.size() != width) {
        fail(std::string("\"") + key + "\" holds something else than " + std::to_string(width) +
             " numbers");
    }
    std::vector<int> numbers;
    for (const Json& value : values) {
        numbers.push_back(pixelsIn(value, key));
    }
    return numbers;
}

double JsonFields::numberUpTo(double most, const char* key) const {
    const double value = number(key);
    if (!(value >= 0.0 && value <= most)) {
        fail(std::string("\"") + key + "\" is not 0 to " + std::to_string(static_cast<int>(most)));
    }
    return value;
}

int JsonFields::pixelsUpTo(int most, const char* key) const {
    const int value = pixels(key);
    if (value < 0 || value > most) {
        fail(std::string("\"") + key + "\" is not 0 to " + std::to_string(most));
    }
    return value;
}

void JsonFields::requireVersion(int version, int first,
                                std::initializer_list<const char*> keys) const {
    for (const char* const key : keys) {
        if (version < first && has(key)) {
            fail(std::string("has \"") + key + R"(", which needs "version": )" +
                 std::to_string(first) + " at the top of the file");
        }
    }
}

void JsonFields::allowOnly(std::initializer_list<const char*> keys) const {
    for (const auto& [key, value] : m_object.items()) {
        const auto sameKey = [&key = key](const char* known) { return key == known; };
        if (std::none_of(keys.begin(), keys.end(), sameKey)) {
            fail("has a field \"" + key + "\" that does not belong there");
        }
    }
}

void JsonFields::fail(const std::string& what) const {
    throw UserError(m_name + " " + what + "; see the man page for the format");
}

int JsonFields::pixelsIn(const Json& value, const char* key) const {
    if (!value.is_number_integer() || value.get<double>() < INT32_MIN ||
        value.get<double>() > INT32_MAX) {
        fail(std::string("\"") + key + "\" holds something else than a whole number");
    }
    return value.get<int>();
}
