#include "PluginScript.h"

#include <utils/Errors.h>

#include <media/stagefright/MediaErrors.h>

namespace fuzz {

namespace {

uint32_t LittleEndian(const uint8_t* data, int bytes) {
    uint32_t value = 0;
    for (int i = 0; i < bytes; ++i) value |= uint32_t{data[i]} << (8 * i);
    return value;
}

}  // namespace

Script Script::Parse(const uint8_t* data) {
    Script script;
    script.flags = data[0];
    script.pattern = data[1];
    script.errorAt = static_cast<uint16_t>(LittleEndian(data + 2, 2));
    script.offset = LittleEndian(data + 4, 4);
    for (size_t i = 0; i < kOperations; ++i) {
        const uint8_t* raw = data + 8 + 2 * i;
        Operation& operation = script.operations[i];
        operation.what = static_cast<Do>((raw[0] & 0x0F) % static_cast<uint8_t>(Do::kCount));
        operation.track = raw[0] >> 4;
        operation.argument = raw[1];
    }
    return script;
}

testing_support::Faults Script::FaultsFor(size_t size) const {
    testing_support::Faults faults;
    if ((pattern & 0x0F) != 0) faults.maxBytesPerCall = size_t{1} << ((pattern & 0x0F) - 1);
    faults.shortEvery = pattern >> 4;
    if (errorAt != 0) faults.errorAtCall = errorAt - 1u;
    if (Has(kUnknownLength)) faults.sizeStatus = android::ERROR_UNSUPPORTED;
    if (Has(kCachingSource)) faults.flags = android::DataSource::kIsCachingDataSource;
    if (Has(kWrongLength)) {
        faults.claimSize = true;
        faults.claimedSize = static_cast<off64_t>(size) + static_cast<int32_t>(offset);
    }
    if (Has(kFailsAtOffset)) faults.errorFromOffset = offset;
    return faults;
}

}  // namespace fuzz
