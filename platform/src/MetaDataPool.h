// MetaDataPool: a bounded stock of empty MetaData objects for MediaBuffer.
//
// Every access unit needs one, and making one costs two allocations and as many frees. Thread-safe, and never
// waits: whoever finds the stock in use makes or frees an object of its own. Empty under the address
// sanitizer, so that a use after release shows.
#pragma once

#include <media/stagefright/MetaData.h>

namespace android {

// An empty MetaData with one strong reference, the caller's.
MetaData* TakeMetaData();

// Takes the caller's reference over: keeps the object, or lets go of it when somebody else still refers to it.
void ReturnMetaData(MetaData* metaData);

}  // namespace android
