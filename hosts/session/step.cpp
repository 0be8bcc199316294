#include "session/step.h"

#include <algorithm>

const char* nameOf(Operation operation) {
    const auto* found = std::find_if(
        kOperationNames.begin(), kOperationNames.end(),
        [operation](const OperationName& entry) { return entry.operation == operation; });
    return found->name;
}

std::optional<Operation> operationNamed(const std::string& name) {
    const auto* found =
        std::find_if(kOperationNames.begin(), kOperationNames.end(),
                     [&name](const OperationName& entry) { return name == entry.name; });
    if (found == kOperationNames.end()) {
        return std::nullopt;
    }
    return found->operation;
}
