// Writes what a fuzzer begins with: a folder of seeds for each target, and matroska.dict.
//
//     fuzz_seeds FOLDER
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "FuzzTarget.h"
#include "PluginScript.h"
#include "support/Oddities.h"

namespace {

namespace fs = std::filesystem;
using namespace testing_support;

class Writer {
  public:
    explicit Writer(fs::path folder) : mFolder(std::move(folder)) { fs::create_directories(mFolder); }

    void Write(const std::string& name, const std::vector<Bytes>& parts) {
        const Bytes bytes = Concat(parts);
        std::ofstream file(mFolder / name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!file.flush()) mFailed = true;
    }
    bool Failed() const { return mFailed; }

  private:
    const fs::path mFolder;
    bool mFailed = false;
};

// Every file once as it is, and the plain one under every kind of fault and comparison.
bool WritePluginSeeds(const fs::path& folder) {
    Writer writer(folder / "plugin");
    const std::string operations = "01 03 02 80 04 20 12 40 14 FF 01 00 23 03 29 00 1A 00 06 10 0D 00 0E 07";
    const std::vector<std::pair<const char*, const char*>> scripts = {
        {"unknown_length", "01 00 0000 00000000"}, {"caching", "02 00 0000 00000000"},
        {"longer", "04 00 0000 40000000"},         {"shorter", "04 00 0000 C0FFFFFF"},
        {"byte_by_byte", "08 01 0000 00000000"},   {"now_and_then_short", "08 50 0000 00000000"},
        {"error_at_call", "08 00 2800 00000000"},  {"fails_at_offset", "48 00 0000 40010000"},
        {"scarce_memory", "88 00 0000 04000000"},  {"forgotten", "28 00 0000 00000000"},
    };
    for (const Oddity& file : Oddities()) {
        const bool isPlain = file.name == "plain";
        writer.Write(file.name, {Hex(isPlain ? "38 00 0000 60010000" : "18 00 0000 F0000000"),
                                 Hex(operations), file.bytes});
        if (file.name == "two_subtitle_tracks" || file.name == "lacing_ebml" || file.name == "zlib") {
            writer.Write(file.name + "_threads", {Hex("20 00 0000 00000000"), Hex(operations), file.bytes});
        }
        if (!isPlain) continue;
        for (const auto& script : scripts) {
            writer.Write(std::string("plain_") + script.first,
                         {Hex(script.second), Hex(operations), file.bytes});
        }
    }
    return !writer.Failed();
}

bool WriteNodeSeeds(const fs::path& folder) {
    Writer writer(folder / "node");
    for (const Oddity& file : Oddities()) {
        writer.Write(file.name, {Hex("00 00 0000 18538067"), file.bytes});
    }
    for (const Oddity& file : Oddities()) {
        if (file.name == "chapters" || file.name == "attachment" || file.name == "block_additions") {
            writer.Write(file.name + "_whole", {Hex("06 00 0000 1F43B675"), file.bytes});
        }
    }
    const Bytes plain = OddityNamed("plain");
    writer.Write("plain_unknown_length", {Hex("01 00 0000 1F43B675"), plain});
    writer.Write("plain_parsed", {Hex("02 00 0000 18538067"), plain});
    return !writer.Failed();
}

// Every element's ID, the two magic texts and the codec IDs.
bool WriteDictionary(const fs::path& folder) {
    std::ofstream file(folder / "matroska.dict");
    size_t count = 0;
    const MatroskaExtReader::ElementInfo* table = MatroskaExtReader::ElementTable(&count);
    for (size_t i = 0; i < count; ++i) {
        file << "# " << table[i].name << "\n\"";
        char digits[8];
        for (int shift = 24; shift >= 0; shift -= 8) {
            if (table[i].id >> shift == 0) continue;
            std::snprintf(digits, sizeof(digits), "\\x%02X", (table[i].id >> shift) & 0xFF);
            file << digits;
        }
        file << "\"\n";
    }
    for (const char* text :
         {"matroska",        "webm",          "V_MS/VFW/FOURCC", "V_MPEG4/ISO/AVC", "V_MPEGH/ISO/HEVC",
          "V_MPEG4/ISO/ASP", "V_MPEG1",       "V_MPEG2",         "V_VP9",           "V_REAL/RV40",
          "A_AAC/MPEG4/LC",  "A_MPEG/L3",     "A_AC3",           "A_DTS",           "A_FLAC",
          "A_VORBIS",        "A_PCM/INT/LIT", "A_PCM/INT/BIG",   "A_MS/ACM",        "A_REAL/COOK",
          "S_TEXT/UTF8",     "S_TEXT/ASS",    "S_VOBSUB"}) {
        file << '"' << text << "\"\n";
    }
    file << "\"\\x01\\xFF\\xFF\\xFF\\xFF\\xFF\\xFF\\xFF\"\n\"\\x00\\x00\\x00\\x01\"\n\"\\x00\\x00\\x01\\xB6\""
            "\n";
    return static_cast<bool>(file.flush());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
        return 2;
    }
    const fs::path folder = argv[1];
    const bool isWritten = WritePluginSeeds(folder) && WriteNodeSeeds(folder) && WriteDictionary(folder);
    if (!isWritten) std::fprintf(stderr, "fuzz_seeds: cannot write to %s\n", folder.c_str());
    return isWritten ? 0 : 1;
}
