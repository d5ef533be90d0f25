// Runs one target on files, or on every file of folders, without libFuzzer: in any build, with any compiler.
//
//     fuzz_replay TARGET PATH...
// Exit code 0 when every input kept the target's promises, 2 for wrong arguments or when there is no input; a
// broken promise aborts, and the input's name is the last line before it.
#include <cstdio>
#include <cstring>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "FuzzTarget.h"

namespace {

std::vector<std::filesystem::path> Collect(int count, char** paths) {
    std::vector<std::filesystem::path> files;
    for (int i = 0; i < count; ++i) {
        if (!std::filesystem::is_directory(paths[i])) {
            files.emplace_back(paths[i]);
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(paths[i])) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool Run(const fuzz::Target& target, const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "fuzz_replay: cannot read %s\n", path.c_str());
        return false;
    }
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    std::printf("%s %s\n", target.name, path.filename().c_str());
    std::fflush(stdout);
    target.run(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const fuzz::Target* target =
        std::find_if(std::begin(fuzz::kTargets), std::end(fuzz::kTargets),
                     [&](const fuzz::Target& t) { return argc > 2 && std::strcmp(t.name, argv[1]) == 0; });
    if (target == std::end(fuzz::kTargets)) {
        std::fprintf(stderr, "usage: fuzz_replay TARGET PATH...\n");
        return 2;
    }
    fuzz::Prepare();
    size_t runs = 0;
    for (const auto& path : Collect(argc - 2, argv + 2)) {
        if (!Run(*target, path)) return 2;
        ++runs;
    }
    std::printf("%s: %zu inputs\n", target->name, runs);
    return runs == 0 ? 2 : 0;
}
