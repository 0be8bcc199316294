// For libraries that print about damaged files and offer no way to ask them not to.
#pragma once

// While it lives, what the process prints on standard error is thrown away.
class QuietStandardError {
  public:
    QuietStandardError();
    ~QuietStandardError();
    QuietStandardError(const QuietStandardError&) = delete;
    QuietStandardError& operator=(const QuietStandardError&) = delete;

  private:
    int m_saved;
};
