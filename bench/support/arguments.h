// Command lines of the form "--name value" and "--flag".
#pragma once

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

class Arguments {
  public:
    Arguments(int count, char** arguments);

    // Each takes its argument off the line; `otherwise` without it. A number that is none and a
    // name without a value throw std::runtime_error.
    std::string text(const std::string& name, const std::string& otherwise);
    double number(const std::string& name, double otherwise);
    bool flag(const std::string& name);
    // Throws std::runtime_error naming what nobody took.
    void requireAllTaken() const;

  private:
    std::vector<std::string> m_rest;
};

// A program's main: runs body(arguments) and returns its exit code, with one line for an exception.
template <typename Body>
int runProgram(int count, char** list, Body body) {
    try {
        body(Arguments(count, list));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
