#include "source/HttpClient.h"

#include <dlfcn.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/ProgramFolder.h"
#include "source/CurlClient.h"

namespace mkvx {
namespace {

// Stays loaded for the process's life, as libcurl's own state does.
NewHttpClient loadLibrary() {
    const std::string path = besideProgram("libmkvx_http.so", "../lib/libmkvx_http.so");
    void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw FileFailure(path, std::string("cannot be loaded: ") + ::dlerror());
    void* const function = ::dlsym(library, kNewHttpClient);
    if (function == nullptr) throw FileFailure(path, "is no part of this program");
    return reinterpret_cast<NewHttpClient>(function);
}

}  // namespace

std::unique_ptr<HttpClient> newHttpClient(const std::string& url, uint32_t timeoutS) {
    static const NewHttpClient make = loadLibrary();
    return std::unique_ptr<HttpClient>(make(url, timeoutS, wasInterrupted));
}

}  // namespace mkvx
