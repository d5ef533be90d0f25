// The stock that MediaBuffer lives on: empty MetaData objects, memory for MediaBuffer objects and for their
// bytes.
//
// Every access unit needs one of each, and making them costs four allocations and as many frees. Each thread
// has a stock of its own, bounded, freed when the thread ends: nothing locks and nothing waits. A thread that
// only takes, as one that reads units for another to release does, finds it empty and allocates; one that
// only returns keeps it full. Empty under the address sanitizer, so that a use after release shows.
#pragma once

#include <media/stagefright/MetaData.h>

#include <stddef.h>

namespace android {

// An empty MetaData with one strong reference, the caller's.
MetaData* TakeMetaData();

// Takes the caller's reference over: keeps the object, or lets go of it when somebody else still refers to
// it.
void ReturnMetaData(MetaData* metaData);

// Uninitialised memory for one MediaBuffer; as operator new and delete.
void* TakeShell(size_t size);
void ReturnShell(void* shell);

// Uninitialised memory for `size` bytes; null where malloc refuses it. The bytes of a few small units are
// kept.
void* TakeBytes(size_t size);
void ReturnBytes(void* bytes, size_t size);

}  // namespace android
