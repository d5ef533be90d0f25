// The annotations by which clang checks, at compile time, that data is touched under its lock only.
//
// Newer platform trees define them beside the mutex that they speak of. Where the mutex knows nothing of them
// they say nothing.
#pragma once

#include <utils/Mutex.h>

#ifndef GUARDED_BY
#define GUARDED_BY(lock)     // a field: itself
#define PT_GUARDED_BY(lock)  // a field: what it points at
#define REQUIRES(lock)       // a function: its caller holds the lock
#endif
