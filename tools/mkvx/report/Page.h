// From the report's model to the text of the page.
//
// The page stands alone: style, scripts and data are in it, and its own policy forbids every request and
// every script whose hash it does not name. It is readable without scripts, which draw the charts. Texts of
// the file reach it only as escaped text (Html.h) and as JSON data.
#pragma once
#include <string>

#include "report/Model.h"

namespace mkvx {

// A file may hold megabytes of text where a name is expected: its beginning, printable().
std::string shortText(const std::string& text);

// What the scripts draw. One line of JSON, ASCII only; docs/mkvx.md does not promise its members.
std::string reportJson(const ReportPage& page);

// Markup of what the page says without scripts; a part that has nothing to say is empty.
struct ReportBody {
    std::string head;      // verdict and facts
    std::string findings;  // of the file as a whole, and what was not examined
    std::string tracks;
    std::string layout;  // and damage
    std::string rest;    // chapters, attachments
};
ReportBody reportBody(const ReportPage& page);

// The whole HTML document.
std::string reportHtml(const ReportPage& page);

}  // namespace mkvx
