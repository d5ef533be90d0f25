// Whether this program is built with the address or thread sanitizer: stacks and counts differ then.
#pragma once

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define IS_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define IS_SANITIZED 1
#endif
#endif
#ifndef IS_SANITIZED
#define IS_SANITIZED 0
#endif
