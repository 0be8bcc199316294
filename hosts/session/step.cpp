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

const char* nameOf(Correction correction) {
    const auto* found = std::find_if(
        kCorrectionNames.begin(), kCorrectionNames.end(),
        [correction](const CorrectionName& entry) { return entry.correction == correction; });
    return found->name;
}

std::optional<Correction> correctionNamed(const std::string& name) {
    const auto* found =
        std::find_if(kCorrectionNames.begin(), kCorrectionNames.end(),
                     [&name](const CorrectionName& entry) { return name == entry.name; });
    if (found == kCorrectionNames.end()) {
        return std::nullopt;
    }
    return found->correction;
}

std::optional<Correction> usualCorrection(Operation operation, bool isFirst) {
    if (operation == Operation::kUndo || operation == Operation::kRedo) {
        return std::nullopt;
    }
    return isRegion(operation) && !isFirst ? Correction::kTouchUp : Correction::kWholeObject;
}
