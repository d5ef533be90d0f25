#include "report/Page.h"

#include <fmt/format.h>
#include <openssl/evp.h>
#include <stdexcept>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "report/Assets.h"

namespace mkvx {
namespace {

// What a content security policy names a script or style by.
std::string policyHash(std::string_view text) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    if (EVP_Digest(text.data(), text.size(), digest, &size, EVP_sha256(), nullptr) != 1)
        throw std::runtime_error("the crypto library offers no SHA-256");
    unsigned char base64[2 * EVP_MAX_MD_SIZE];
    const int length = EVP_EncodeBlock(base64, digest, int(size));
    return fmt::format("'sha256-{}'", std::string_view(reinterpret_cast<char*>(base64), size_t(length)));
}

std::string policy() {
    return fmt::format(
        "default-src 'none'; script-src {} {}; style-src {}; img-src data:; base-uri 'none'; form-action "
        "'none'",
        policyHash(kReportLibrary), policyHash(kReportScript), policyHash(kReportStyle));
}

std::string escapeHtml(std::string_view text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
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

}  // namespace

std::string reportHtml(const ReportPage& page) {
    return fill(kReportTemplate, {{"policy", escapeHtml(policy())},
                                  {"title", escapeHtml(printable(page.name))},
                                  {"version", MKVX_VERSION},
                                  {"style", std::string(kReportStyle)},
                                  {"library", std::string(kReportLibrary)},
                                  {"script", std::string(kReportScript)},
                                  {"licence", escapeHtml(kReportLicence)},
                                  {"data", escapeScriptData(reportJson(page))}});
}

}  // namespace mkvx
