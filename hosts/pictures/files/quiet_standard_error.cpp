#include "pictures/files/quiet_standard_error.h"

#include <fcntl.h>
#include <unistd.h>

QuietStandardError::QuietStandardError() : m_saved(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (m_saved >= 0 && nowhere >= 0) {
        dup2(nowhere, STDERR_FILENO);
    }
    if (nowhere >= 0) {
        close(nowhere);
    }
}

QuietStandardError::~QuietStandardError() {
    if (m_saved >= 0) {
        dup2(m_saved, STDERR_FILENO);
        close(m_saved);
    }
}
