// From the report's model to the text of the page.
//
// The page stands alone: style, scripts and data are in it, and its own policy forbids every request and
// every script whose hash it does not name. Texts of the file reach it only as JSON data.
#pragma once
#include <string>

#include "report/Model.h"

namespace mkvx {

// One line of JSON, ASCII only; docs/mkvx.md does not promise its members.
std::string reportJson(const ReportPage& page);

// The whole HTML document.
std::string reportHtml(const ReportPage& page);

}  // namespace mkvx
