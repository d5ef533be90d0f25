#include "device/DropReasons.h"

namespace mkvx {

std::optional<DropReason> dropReason(android::DropReason reason) {
    switch (reason) {
        case android::DropReason::kNone:
            return std::nullopt;
        case android::DropReason::kSubtitleKind:
            return DropReason::kSubtitleKind;
        case android::DropReason::kUnmappedCodec:
            return DropReason::kUnmappedCodec;
        case android::DropReason::kTrackType:
            return DropReason::kTrackType;
        case android::DropReason::kAacNoProfile:
            return DropReason::kAacNoProfile;
        case android::DropReason::kAacFrequency:
            return DropReason::kAacFrequency;
        case android::DropReason::kAacProfile:
            return DropReason::kAacProfile;
        case android::DropReason::kNoParameterSets:
            return DropReason::kNoParameterSets;
    }
    return std::nullopt;
}

}  // namespace mkvx
