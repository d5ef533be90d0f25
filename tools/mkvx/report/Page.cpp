#include "report/Page.h"

#include <fmt/format.h>
#include <openssl/evp.h>
#include <stdexcept>
#include <utility>
#include <vector>

#include "base/Base64.h"
#include "report/Assets.h"
#include "report/Html.h"

namespace mkvx {
namespace {

// What a content security policy names a script or style by.
std::string policyHash(std::string_view text) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    if (EVP_Digest(text.data(), text.size(), digest, &size, EVP_sha256(), nullptr) != 1)
        throw std::runtime_error("the crypto library offers no SHA-256");
    return fmt::format("'sha256-{}'", toBase64(std::string(digest, digest + size)));
}

std::string policy() {
    return fmt::format(
        "default-src 'none'; script-src {} {}; style-src {}; img-src data:; base-uri 'none'; form-action "
        "'none'",
        policyHash(kReportLibrary), policyHash(kReportScript), policyHash(kReportStyle));
}

// Nothing in a script element may look like markup; in JSON these characters stand in strings only.
std::string escapeScriptData(const std::string& json) {
    std::string out;
    out.reserve(json.size());
    for (const char c : json) {
        if (c == '<' || c == '>' || c == '&')
            out += fmt::format("\\u{:04x}", unsigned(c));
        else
            out += c;
    }
    return out;
}

using Parts = std::vector<std::pair<std::string_view, std::string>>;

// Puts each part in place of its {{name}}. What was put in is not looked at again.
std::string fill(std::string_view text, const Parts& parts) {
    std::string out;
    while (true) {
        const size_t begin = text.find("{{");
        out += text.substr(0, begin);
        if (begin == std::string_view::npos) return out;
        const size_t end = text.find("}}", begin);
        const std::string_view name = text.substr(begin + 2, end - begin - 2);
        for (const auto& [known, value] : parts)
            if (known == name) out += value;
        text.remove_prefix(end + 2);
    }
}

// The way to the sections that are there.
std::string navigation(const ReportPage& page, const ReportBody& body) {
    std::string links;
    const auto add = [&](bool isThere, const char* id, const char* name, const char* kind = "") {
        if (isThere) links += fmt::format("<a href=\"#{}\" class=\"{}\">{}</a>\n", id, kind, name);
    };
    add(!body.findings.empty(), "findings", "The file");
    add(!body.tracks.empty(), "tracks", "Tracks");
    add(page.isRead, "timeline", "Timeline", "scripted");
    add(page.isRead, "seeking", "Seeking", "scripted");
    add(!body.layout.empty(), "layout", "Layout");
    add(body.rest.find("id=\"chapters\"") != std::string::npos, "chapters", "Chapters");
    add(body.rest.find("id=\"attachments\"") != std::string::npos, "attachments", "Attachments");
    return links;
}

}  // namespace

std::string reportHtml(const ReportPage& page) {
    const ReportBody body = reportBody(page);
    return fill(kReportTemplate, {{"policy", html::escaped(policy())},
                                  {"title", html::text(page.name)},
                                  {"version", MKVX_VERSION},
                                  {"style", std::string(kReportStyle)},
                                  {"head", body.head},
                                  {"nav", navigation(page, body)},
                                  {"findings", body.findings},
                                  {"tracks", body.tracks},
                                  {"charts", page.isRead ? std::string(kReportCharts) : std::string()},
                                  {"layout", body.layout},
                                  {"rest", body.rest},
                                  {"library", std::string(kReportLibrary)},
                                  {"script", std::string(kReportScript)},
                                  {"licence", html::escaped(kReportLicence)},
                                  {"data", escapeScriptData(reportJson(page))}});
}

}  // namespace mkvx
