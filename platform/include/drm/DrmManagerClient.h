// The two names of the DRM framework that DataSource mentions. The host has no DRM service: no function here
// ever hands out a handle; the class is complete only because sp<DecryptHandle> is returned by value.
#pragma once

#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String8.h>

namespace android {

class DrmManagerClient;

class DecryptHandle : public RefBase {};

}  // namespace android
