// How the threads of a run behave towards the system.
#pragma once

#include <functional>

#include "engine/task_runtime.h"

void ApplyThreadPriority(TTaskPriority level);

// What it answers may be called on any thread and frees the one that asked for it from a call of the system
// in which that one is stuck: a call to a network drive that does not answer lasts up to a minute.
std::function<void()> BreakOffCallsOfThisThread();
