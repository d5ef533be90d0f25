// Message loops do not exist on the host; the class is here for the types that AMessage's constructor names.
#pragma once

#include <stdint.h>

#include <utils/RefBase.h>

namespace android {

struct ALooper : public RefBase {
    typedef int32_t event_id;
    typedef int32_t handler_id;
};

}  // namespace android
