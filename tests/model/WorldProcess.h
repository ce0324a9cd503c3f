#pragma once

#include <sys/types.h>

namespace orvo::model
{

/// Does the work in a process of its own, in which the product begins anew: its application object,
/// what it says once in its life, the watchdog that it opens once.
///
/// installTime: puts the event dispatcher in place, before the application object is made.
/// Errors: no process is the end of this program, with a message.
pid_t startWorldProcess(void (*installTime)(), int (*work)(void*), void* argument);

/// What the work answered; 128 + signal when its process crashed.
int endOfProcess(int waitStatus);

} // namespace orvo::model
