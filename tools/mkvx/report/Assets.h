// The files that the report page is made of, as they were when the program was built. Defined in a source
// file that the build makes from tools/mkvx/report/ and the drawing library (cmake/ReportAssets.cmake).
#pragma once
#include <string_view>

namespace mkvx {

extern const std::string_view kReportTemplate;
extern const std::string_view kReportCharts;  // the sections that scripts fill
extern const std::string_view kReportStyle;
extern const std::string_view kReportScript;
extern const std::string_view kReportLibrary;
extern const std::string_view kReportLicence;  // of the library

}  // namespace mkvx
