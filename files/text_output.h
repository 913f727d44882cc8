// Text output whose lines end in CR LF on every system.
#pragma once

#include <string>
#include <string_view>

#include "files/checksum.h"
#include "files/output_file.h"

namespace vantrel {

/// Writes text to an output, which the caller opens and closes.
class CTextOutput {
public:
    explicit CTextOutput(COutputFile& output) : m_output(output) {}

    /// Adds text; each "\n" becomes CR LF.
    void Write(std::string_view text);
    /// Passes pending text to the output. Call it before any other use of the output.
    void Flush();
    /// Checksum of everything flushed so far.
    const SChecksum& Sum() const { return m_sum; }

private:
    COutputFile& m_output;
    std::string m_pending;
    SChecksum m_sum;
};

}  // namespace vantrel
