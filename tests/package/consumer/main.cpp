// Counts a file's track entries with the installed reader, and its offered tracks with the installed plug-in.
#include <host/ExtractorPlugin.h>
#include <host/PreadSource.h>
#include <matroska/reader/MatroskaReader.h>
#include <cstdio>

int main(int, char** argv) {
    const android::sp<android::DataSource> source = new android::host::PreadSource(argv[1]);
    MatroskaExtReader::CMatroskaFile file(source);
    if (MatroskaExtReader::Failed(file.Init())) return 1;

    android::host::ExtractorPlugin plugin;
    std::string error;
    if (!android::host::ExtractorPlugin::Load(PLUGIN, &plugin, &error)) return 2;
    const android::sp<android::MediaExtractor> extractor = plugin.open(source, nullptr);
    std::printf("%u entries, %zu offered\n", file.GetTrackCnt(), extractor->countTracks());
}
