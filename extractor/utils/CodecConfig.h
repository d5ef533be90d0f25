// Shaping codec configuration: the `esds` record, and where an MPEG-4 visual stream's headers end.
// Stateless; failures are logged under the tag "Utils".
#pragma once

#include <utils/RefBase.h>

namespace android {
class MetaData;
}

#pragma GCC visibility push(default)

namespace android {

// Wraps `size` bytes of decoder specific information in an ES descriptor (ISO/IEC 14496-1, 7.2.6.5; the sizes
// differ, see the body) and stores a copy as kKeyESDS, data type 0, in place of an earlier one. Does nothing
// when `info` is null or `size` is 0; when memory lacks, `meta` stays as it is and the log says so.
void AddESDSFromSpecificInfo(const sp<MetaData>& meta, const void* info, unsigned int size);

// Length in bytes of the headers at the start of an MPEG-4 visual frame (ISO/IEC 14496-2): the offset of the
// first group-of-VOP or VOP start code. Without one it is the offset where the search ended, which is never
// beyond `size`. 0 for null or empty data.
int PreProcessM4vExtraData(unsigned char* data, unsigned int size);

}  // namespace android

#pragma GCC visibility pop
