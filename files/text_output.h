// Text files as the programs exchange them: lines end in CR LF on every system.
#pragma once

#include <string>
#include <string_view>

#include "files/output_file.h"

namespace vantrel {

/// Writes text to an output that someone else opened and will close.
class CTextOutput {
public:
    explicit CTextOutput(COutputFile& output) : m_output(output) {}

    /// Adds text; each "\n" becomes CR LF.
    void Write(std::string_view text);
    /// Brings everything to the output. To be called before anything else is done with it.
    void Flush();

private:
    COutputFile& m_output;
    std::string m_pending;
};

}  // namespace vantrel
