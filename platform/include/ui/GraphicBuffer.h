// Stand-in for a graphics memory block. The host has none; the class is complete so that an sp<> of it can be
// formed and MediaBuffer's constructor for it keeps its shape.
#pragma once

#include <utils/RefBase.h>

namespace android {

class GraphicBuffer : public RefBase {};

}  // namespace android
