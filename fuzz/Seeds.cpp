// Writes what a fuzzer begins with: a folder of seeds for each target, and matroska.dict.
//
//     fuzz_seeds FOLDER
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "FuzzTarget.h"
#include "PluginScript.h"
#include "SeedFiles.h"

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
    for (const fuzz::SeedFile& file : fuzz::MakeSeedFiles()) {
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
    for (const fuzz::SeedFile& file : fuzz::MakeSeedFiles()) {
        writer.Write(file.name, {Hex("00 00 0000 18538067"), file.bytes});
    }
    for (const fuzz::SeedFile& file : fuzz::MakeSeedFiles()) {
        if (file.name == "chapters" || file.name == "attachment" || file.name == "block_additions") {
            writer.Write(file.name + "_whole", {Hex("06 00 0000 1F43B675"), file.bytes});
        }
    }
    const Bytes plain = fuzz::MakeSeedFiles().front().bytes;
    writer.Write("plain_unknown_length", {Hex("01 00 0000 1F43B675"), plain});
    writer.Write("plain_parsed", {Hex("02 00 0000 18538067"), plain});
    return !writer.Failed();
}

bool WriteLacingSeeds(const fs::path& folder) {
    Writer writer(folder / "lacing");
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"xiph", "00 0001 2000 00 0307 02 01 FF01 AABB"},
        {"xiph_run", "00 0000 FFFF 00 0101 FF FFFFFFFFFF"},
        {"fixed", "01 0000 0700 00 0200 02 AABBCCDDEEFF"},
        {"fixed_255", "01 0000 0700 00 1300 FF 00"},
        {"ebml", "02 0000 1000 00 0311 02 83 C1 AABBCC"},
        {"ebml_0", "02 0000 0002 FF 0101 00 81 BFBFBF"},
        {"ebml_wide", "02 0000 0002 FF 0101 02 0100000000000003 4001 5FFE"},
        {"ebml_unknown", "02 0000 0002 FF 0101 02 FF 7FFF AA"},
        {"ebml_negative", "02 0000 0002 FF 0101 03 82 80 80 AA"},
    };
    for (const auto& row : rows) writer.Write(row.first, {Hex(row.second)});
    return !writer.Failed();
}

bool WriteEncodingSeeds(const fs::path& folder) {
    Writer writer(folder / "encodings");
    const std::string none = "0000000000 0000000000 0000000000 0000000000 0000000000000000";
    const Bytes inflatable = Hex("78DA4B4C4A0600024D0127"), cut = Hex("78DA4B4C4A");
    const auto row = [](const char* first, const char* second) {
        return Hex(std::string(first) + second + "0000000000 0000000000 0000000000000000");
    };
    writer.Write("none", {Hex("00 14 01 09"), Hex(none), Hex("0102")});
    writer.Write("zlib", {Hex("01 14 01 09"), row("0001000000", "0000000000"), inflatable});
    writer.Write("zlib_cut", {Hex("01 14 01 01"), row("0001000000", "0000000000"), cut});
    writer.Write("strip", {Hex("01 14 01 01"), row("0001000303", "0000000000"), Hex("000001 AABB")});
    writer.Write("strip_then_zlib",
                 {Hex("02 14 01 06"), row("0101000302", "0001000000"), Hex("AABB"), inflatable});
    writer.Write("zlib_then_strip",
                 {Hex("02 14 01 06"), row("0001000302", "0101000000"), Hex("AABB"), inflatable});
    writer.Write("encrypted", {Hex("02 14 01 06"), row("0001000302", "0101010000"), Hex("AABB"), inflatable});
    const Bytes bomb = fuzz::Deflated(Bytes(6 << 20));
    writer.Write("bomb", {Hex("01 1A 01 80"), row("0001000000", "0000000000"), bomb});
    writer.Write("bomb_cut",
                 {Hex("01 1A 01 80"), row("0001000000", "0000000000"), Bytes(bomb.begin(), bomb.end() - 9)});
    writer.Write("bomb_beyond_limit", {Hex("01 16 01 80"), row("0001000000", "0000000000"), bomb});
    writer.Write("small_limit", {Hex("01 01 01 09"), row("0001000000", "0000000000"), inflatable});
    return !writer.Failed();
}

bool WriteCodecSeeds(const fs::path& folder) {
    Writer writer(folder / "codecprivate");
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"vorbis", "00 00 00000000 00 00 02 04 03 01766F72 036F72 05626F6F6B73"},
        {"vorbis_broken", "00 00 00000000 00 00 02 04 03 01766F72 046F72 05"},
        {"aac", "01 02 44AC0000 02 00 1210"},
        {"aac_sbr", "01 00 C05D0000 02 00 2B0AC8A000"},
        {"esds", "02 00 00000000 00 00 1210"},
        {"nal_lengths", "03 00 00000000 00 00 00000002 6588 00000001 41"},
        {"nal_start_codes", "03 00 00000000 00 00 00000001 6588 00000001 41"},
        {"parameter_sets",
         "04 00 00000000 00 00 00000001 6742C00DDA0507E84000000300400000 0C83C508EF 00000001 68CE3C80"
         "00000001 6588"},
        {"vop", "04 00 00000000 00 00 000001B0 01 000001B5 8913 000001B6 10"},
        {"a52", "04 00 00000000 00 00 0B77 0000 00 40 40 FF FF"},
        {"bitmap",
         "04 00 00000000 00 00 28000000 40000000 30000000 01001800 58564944 00000000 00000000 00000000 "
         "00000000 00000000"},
        {"event", "05 04 00000000 00 00 312C302C442C2C302C302C302C2C74657874"},
    };
    for (const auto& row : rows) writer.Write(row.first, {Hex(row.second)});
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
    const bool isWritten = WritePluginSeeds(folder) && WriteNodeSeeds(folder) && WriteLacingSeeds(folder) &&
                           WriteEncodingSeeds(folder) && WriteCodecSeeds(folder) && WriteDictionary(folder);
    if (!isWritten) std::fprintf(stderr, "fuzz_seeds: cannot write to %s\n", folder.c_str());
    return isWritten ? 0 : 1;
}
