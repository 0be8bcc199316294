// Session files on disk. The files that they name are relative to the session file's folder; "-" as
// photograph is standard input.
#pragma once

#include <string>

#include "byte_stream.h"
#include "session/session_file.h"

// Reads standard input for "-".
SessionFile readSessionFile(const std::string& path);

// The document to be stored at `path`, with file names made relative to it.
Bytes encodeSessionFile(const SessionFile& session, const std::string& path);
