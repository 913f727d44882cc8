#include "raw/cue_sheet.h"

#include "operation/text.h"

namespace vantrel {

std::string CueSheetOf(const std::string& imageName) {
    return Format("FILE %c%s%c BINARY\n", '"', imageName.c_str(), '"') +
           "  TRACK 01 MODE2/2352\n"
           "    INDEX 01 00:00:00\n";
}

bool CanStandInCueSheet(const std::string& imageName) {
    return imageName.find_first_of("\"\r\n") == std::string::npos;
}

}  // namespace vantrel
