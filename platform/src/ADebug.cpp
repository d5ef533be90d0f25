#include <media/stagefright/foundation/ADebug.h>

#include <stdio.h>

#include <media/stagefright/MediaErrors.h>

namespace android {

namespace {

struct NamedStatus {
    status_t code;
    const char* name;
};

#define NAMED(code) \
    { code, #code }
const NamedStatus kNamedStatus[] = {
    NAMED(OK),
    NAMED(UNKNOWN_ERROR),
    NAMED(NO_MEMORY),
    NAMED(INVALID_OPERATION),
    NAMED(BAD_VALUE),
    NAMED(BAD_TYPE),
    NAMED(NAME_NOT_FOUND),
    NAMED(PERMISSION_DENIED),
    NAMED(NO_INIT),
    NAMED(ALREADY_EXISTS),
    NAMED(DEAD_OBJECT),
    NAMED(FAILED_TRANSACTION),
    NAMED(BAD_INDEX),
    NAMED(NOT_ENOUGH_DATA),
    NAMED(WOULD_BLOCK),
    NAMED(TIMED_OUT),
    NAMED(UNKNOWN_TRANSACTION),
    NAMED(ERROR_ALREADY_CONNECTED),
    NAMED(ERROR_NOT_CONNECTED),
    NAMED(ERROR_UNKNOWN_HOST),
    NAMED(ERROR_CANNOT_CONNECT),
    NAMED(ERROR_IO),
    NAMED(ERROR_CONNECTION_LOST),
    NAMED(ERROR_MALFORMED),
    NAMED(ERROR_OUT_OF_RANGE),
    NAMED(ERROR_BUFFER_TOO_SMALL),
    NAMED(ERROR_UNSUPPORTED),
    NAMED(ERROR_END_OF_STREAM),
    NAMED(INFO_FORMAT_CHANGED),
    NAMED(INFO_DISCONTINUITY),
    NAMED(INFO_OUTPUT_BUFFERS_CHANGED),
};
#undef NAMED

}  // namespace

const char* asString(status_t code) {
    for (const NamedStatus& named : kNamedStatus) {
        if (named.code == code) return named.name;
    }
    static thread_local char number[16];
    snprintf(number, sizeof(number), "%d", code);
    return number;
}

}  // namespace android
