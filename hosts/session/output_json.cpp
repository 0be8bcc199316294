#include "session/output_json.h"

#include <cstdint>

#include "session/json_fields.h"

using Json = nlohmann::ordered_json;

namespace {

template <typename Value>
void put(Json& object, const char* key, const std::optional<Value>& value) {
    if (value) {
        object[key] = *value;
    }
}

std::optional<double> readNumber(const JsonFields& fields, const char* key, double most) {
    return fields.has(key) ? std::optional(fields.numberUpTo(most, key)) : std::nullopt;
}

std::optional<int> readPixels(const JsonFields& fields, const char* key, int most) {
    return fields.has(key) ? std::optional(fields.pixelsUpTo(most, key)) : std::nullopt;
}

Edges readEdges(const JsonFields& fields) {
    const std::string name = fields.text("edges");
    const std::optional<Edges> edges = edgesNamed(name);
    if (!edges) {
        fields.fail("has the unknown edges \"" + name + "\"; there are soft and hard");
    }
    return *edges;
}

}  // namespace

OutputChoice readOutput(const Json& object, const std::string& name) {
    const JsonFields fields(object, name);
    fields.allowOnly(
        {"edges", "edgeWidth", "feather", "smooth", "fillHoles", "dropIslands", "keepLargest"});
    OutputChoice choice;
    if (fields.has("edges")) {
        choice.edges = readEdges(fields);
    }
    choice.edgeWidth = readNumber(fields, "edgeWidth", kLargestEdgeWidth);
    choice.feather = readNumber(fields, "feather", kLargestFeather);
    choice.smooth = readPixels(fields, "smooth", kLargestSmoothing);
    choice.fillHoles = readPixels(fields, "fillHoles", INT32_MAX);
    choice.dropIslands = readPixels(fields, "dropIslands", INT32_MAX);
    if (fields.has("keepLargest")) {
        choice.keepLargest = fields.flag("keepLargest");
    }
    return choice;
}

Json asJson(const OutputChoice& choice) {
    Json object = Json::object();
    if (choice.edges) {
        object["edges"] = nameOf(*choice.edges);
    }
    put(object, "edgeWidth", choice.edgeWidth);
    put(object, "feather", choice.feather);
    put(object, "smooth", choice.smooth);
    put(object, "fillHoles", choice.fillHoles);
    put(object, "dropIslands", choice.dropIslands);
    put(object, "keepLargest", choice.keepLargest);
    return object;
}
