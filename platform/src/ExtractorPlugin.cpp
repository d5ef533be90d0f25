#define LOG_TAG "MediaExtractor"

#include <host/ExtractorPlugin.h>

#include <dlfcn.h>
#include <strings.h>

#include <vector>

#include <utils/Log.h>

namespace android {
namespace host {

namespace {

constexpr char kGetMimeString[] = "_ZN7android13getMimeStringEPNS_7String8E";
constexpr char kGetSupportExtension[] = "_ZN7android19getSupportExtensionERNS_12SortedVectorINS_7String8EEE";
constexpr char kSniffer[] =
    "_ZN7android7SnifferERKNS_2spINS_10DataSourceEEEPNS_7String8EPfPNS0_INS_8AMessageEEE";
constexpr char kCreateInstance[] =
    "_ZN7android14createInstanceERKNS_2spINS_10DataSourceEEERKNS0_INS_8AMessageEEE";

// The symbol's type is the loader's own knowledge: a mangled name carries no result type.
template <typename Function>
bool resolve(void* library, const char* symbol, const char* name, Function* function, std::string* error) {
    *function = reinterpret_cast<Function>(dlsym(library, symbol));
    if (*function == nullptr) *error = std::string("has no function android::") + name;
    return *function != nullptr;
}

}  // namespace

bool ExtractorPlugin::Load(const std::string& path, ExtractorPlugin* plugin, std::string* error) {
    const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
    void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        *error = dlerror();
        return false;
    }
    ExtractorPlugin loaded;
    loaded.path = path;
    if (!resolve(library, kGetMimeString, "getMimeString", &loaded.getMimeString, error) ||
        !resolve(library, kGetSupportExtension, "getSupportExtension", &loaded.getSupportExtension, error) ||
        !resolve(library, kSniffer, "Sniffer", &loaded.Sniffer, error) ||
        !resolve(library, kCreateInstance, "createInstance", &loaded.createInstance, error)) {
        *error = path + " " + *error;
        dlclose(library);
        return false;
    }
    *plugin = loaded;
    return true;
}

sp<MediaExtractor> ExtractorPlugin::open(const sp<DataSource>& source, const sp<AMessage>& meta) const {
    sp<MediaExtractor> extractor = createInstance(source, meta);
    if (extractor != NULL) extractor->setDrmFlag(false);
    return extractor;
}

// The plug-ins that are known, under the sniffers' lock.
class ExtractorRegistry {
  public:
    static void add(const ExtractorPlugin& plugin) {
        Mutex::Autolock autoLock(DataSource::gSnifferMutex);
        DataSource::RegisterSniffer_l(plugin.Sniffer);
        for (const ExtractorPlugin& known : plugins()) {
            if (known.Sniffer == plugin.Sniffer) return;
        }
        plugins().push_back(plugin);
    }

    static void add(DataSource::SnifferFunc sniffer) {
        Mutex::Autolock autoLock(DataSource::gSnifferMutex);
        DataSource::RegisterSniffer_l(sniffer);
    }

    static bool findForMime(const char* mime, ExtractorPlugin* found) {
        return findIf(found, [mime](const ExtractorPlugin& plugin) {
            String8 own;
            return plugin.getMimeString(&own) && strcasecmp(own.string(), mime) == 0;
        });
    }

    // The plug-in whose sniffer is surest; its MIME type plays no part, two plug-ins may serve the same.
    static bool findBySniffing(const sp<DataSource>& source, ExtractorPlugin* found, sp<AMessage>* meta) {
        String8 mime;
        float confidence;
        DataSource::SnifferFunc winner;
        if (!source->sniffForWinner(&mime, &confidence, meta, &winner)) return false;
        ALOGV("sniffed as %s with confidence %.2f", mime.string(), confidence);
        return findIf(found, [winner](const ExtractorPlugin& plugin) { return plugin.Sniffer == winner; });
    }

  private:
    // Never destroyed, as the libraries are never unloaded.
    static std::vector<ExtractorPlugin>& plugins() {
        static std::vector<ExtractorPlugin>& all = *new std::vector<ExtractorPlugin>;
        return all;
    }

    template <typename Predicate>
    static bool findIf(ExtractorPlugin* found, Predicate predicate) {
        Mutex::Autolock autoLock(DataSource::gSnifferMutex);
        for (const ExtractorPlugin& plugin : plugins()) {
            if (!predicate(plugin)) continue;
            *found = plugin;
            return true;
        }
        return false;
    }
};

bool RegisterPlugin(const std::string& path, std::string* error) {
    ExtractorPlugin plugin;
    if (!ExtractorPlugin::Load(path, &plugin, error)) return false;
    ExtractorRegistry::add(plugin);
    return true;
}

void RegisterSniffer(DataSource::SnifferFunc sniffer) {
    ExtractorRegistry::add(sniffer);
}

}  // namespace host

sp<MediaExtractor> MediaExtractor::Create(const sp<DataSource>& source, const char* mime) {
    sp<AMessage> meta;
    host::ExtractorPlugin plugin;
    const bool found = mime != NULL ? host::ExtractorRegistry::findForMime(mime, &plugin)
                                    : host::ExtractorRegistry::findBySniffing(source, &plugin, &meta);
    return found ? plugin.open(source, meta) : NULL;
}

}  // namespace android
