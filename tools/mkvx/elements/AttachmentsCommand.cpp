// mkvx attachments FILE: the files that are attached, and these files themselves.
#include <fmt/format.h>
#include <algorithm>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/SafeFolder.h"
#include "base/Terminal.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "elements/Model.h"
#include "elements/OpenDocument.h"
#include "source/MatroskaSource.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::string folder;
    Format format = Format::kTable;
};

SavedAttachment save(const Attachment& file, android::DataSource& source, uint64_t& room,
                     SafeFolder& folder) {
    SavedAttachment result;
    try {
        if (file.offset == 0) throw FileFailure(file.name, "has no data");
        if (file.size > room)
            throw FileFailure(file.name, "does not fit into the file beside the ones in front of it");
        result.savedAs = folder.save(file.name, source, file.offset, file.size);
        room -= file.size;
    } catch (const FileFailure& failure) {
        if (!wasInterrupted()) result.problem = failure.what();
    }
    return result;
}

// Attachments do not overlap, so all of them together fit the file; more than that is not written.
void saveAll(const std::string& folderPath, const SourceOptions& options, AttachmentsReport& report) {
    const android::sp<android::DataSource> source = openMatroska(report.file, options);
    off64_t length = 0;
    uint64_t room = source->getSize(&length) == android::OK && length > 0 ? uint64_t(length) : UINT64_MAX;
    SafeFolder folder(folderPath);
    for (const Attachment& file : report.attachments.files) {
        if (wasInterrupted()) return;
        report.saved.push_back(save(file, *source, room, folder));
    }
}

// Returns the exit code.
int tellProblems(const AttachmentsReport& report) {
    int exitCode = kExitDone;
    for (const SavedAttachment& file : report.saved) {
        if (file.problem.empty()) continue;
        tell(fmt::format("{}: attachment {}", report.file, file.problem));
        exitCode = kExitFileUnusable;
    }
    return exitCode;
}

int run(const Globals& globals, const Options& options) {
    AttachmentsReport report;
    report.file = options.file;
    report.attachments = openDocument(options.file, globals.source)->attachments();
    const std::vector<Attachment>& files = report.attachments.files;
    throwIfInterrupted(options.file);
    if (!options.folder.empty() && !files.empty()) saveAll(options.folder, globals.source, report);
    print(report, options.format, stdout);
    std::fflush(stdout);
    if (files.empty())
        tell(fmt::format("{}: has no attachments", options.file));
    else if (!report.attachments.isReached)
        tell(fmt::format("{}: nothing leads the plug-in to its attachments (mkvx tree shows where they are)",
                         options.file));
    const int exitCode = tellProblems(report);
    const auto saved = std::count_if(report.saved.begin(), report.saved.end(),
                                     [](const SavedAttachment& file) { return !file.savedAs.empty(); });
    throwIfInterrupted(options.file,
                       fmt::format("{} of {} were written", saved, counted(files.size(), "attachment")));
    return exitCode;
}

}  // namespace

void addAttachmentsCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("attachments", "The attached files; extracts them when asked to");
    command.value("FILE", options->file, "The file to read").required();
    command.value("--extract", options->folder,
                  "Write the attached files into this folder, over no file that is there");
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx attachments --extract fonts film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
