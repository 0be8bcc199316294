// Editing sessions on made photographs, host call by host call.
#pragma once

#include "recorder.h"

void recordSceneSessions(Recorder& recorder);
