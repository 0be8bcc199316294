// The session files of samples/ and of this folder, replayed as every host replays them.
#pragma once

#include "recorder.h"

void recordSampleSessions(Recorder& recorder);
