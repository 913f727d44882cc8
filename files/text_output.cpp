#include "files/text_output.h"

#include <span>

namespace vantrel {

namespace {

constexpr std::size_t kPendingLimit = 16'384;

}  // namespace

void CTextOutput::Write(std::string_view text) {
    for (const char c : text) {
        if (c == '\n') {
            m_pending += '\r';
        }
        m_pending += c;
    }
    if (m_pending.size() >= kPendingLimit) {
        Flush();
    }
}

void CTextOutput::Flush() {
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(m_pending.data()), m_pending.size());
    m_output.Write(bytes);
    m_sum.Add(bytes);
    m_pending.clear();
}

}  // namespace vantrel
