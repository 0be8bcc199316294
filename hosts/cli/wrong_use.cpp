#include "wrong_use.h"

#include <CLI/CLI.hpp>
#include <vector>

#include "errors.h"

namespace {

using Words = std::vector<std::string>;

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// About the words, in their order, that neither `app` nor the chosen command has a place for.
std::string aboutLeftOver(const Words& words, const CLI::App& app, const std::string& command) {
    const std::string& first = words.front();
    if (first.size() > 1 && first.front() == '-') {
        return first + " is no option of " + command;
    }
    if (app.get_subcommands().empty()) {
        return first + " is no command; the commands are cut, replay, matte and snap";
    }
    std::string list;
    for (const std::string& word : words) {
        list += word + " ";
    }
    return list + (words.size() == 1 ? "is" : "are") + " more than " + command + " takes";
}

// The parser's own words, put as a person would where they count arguments.
std::string aboutValues(const std::string& text) {
    const std::string conversion = "Could not convert: ";
    if (text.rfind(conversion, 0) == 0) {  // NAME = VALUE
        const std::size_t equals = text.find(" = ");
        return text.substr(conversion.size(), equals - conversion.size()) + ": '" +
               text.substr(equals + 3) + "' is not a number that it takes";
    }
    const std::string option = text.substr(0, text.find(": "));
    if (contains(text, "At Most 1 required")) {
        return option + " takes one value and got several";
    }
    if (contains(text, " required ") && contains(text, " missing")) {
        return option + " needs a value";
    }
    return text;
}

}  // namespace

std::string explain(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    const CLI::App& command = chosen.empty() ? app : *chosen.front();
    const std::string name = chosen.empty() ? "segcore" : "segcore " + command.get_name();
    Words leftOver = app.remaining();
    if (leftOver.empty() && &command != &app) {
        leftOver = command.remaining();
    }
    // A word that was not understood is most often why another is missed, so it goes first.
    const bool isAboutWords = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr ||
                              dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    std::string what = aboutValues(error.what());
    if (isAboutWords && !leftOver.empty()) {
        what = aboutLeftOver(leftOver, app, name);
    } else if (chosen.empty() && isAboutWords) {
        what = "no command; the commands are cut, replay, matte and snap";
    }
    return oneLine(what) + "; see " + name + " --help";
}
