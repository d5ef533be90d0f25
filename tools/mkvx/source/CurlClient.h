// The HttpClient on libcurl, in a library of its own that is loaded for the first URL: libcurl brings more
// libraries along than all the rest of mkvx.
#pragma once
#include "source/HttpClient.h"

namespace mkvx {

// The function that the library exports, and its name. Throws std::runtime_error.
using NewHttpClient = HttpClient* (*)(const std::string& url, uint32_t timeoutS, bool (*wasInterrupted)());
constexpr char kNewHttpClient[] = "mkvxNewHttpClient";

}  // namespace mkvx

extern "C" [[gnu::visibility("default")]] mkvx::HttpClient* mkvxNewHttpClient(const std::string& url,
                                                                              uint32_t timeoutS,
                                                                              bool (*wasInterrupted)());
