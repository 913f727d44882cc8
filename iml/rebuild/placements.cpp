#include "iml/rebuild/placements.h"

#include <array>

#include "files/byte_order.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::size_t kHexDigits = 8;
constexpr std::size_t kPathColumn = 18;
constexpr std::int64_t kBoundSize = 4;

}  // namespace

bool CSideLists::AppendBound(std::uint32_t sector) {
    return m_bounds.Append(Le32(sector));
}

bool CSideLists::Append(const SListedFile& file) {
    const auto first = static_cast<std::uint32_t>(file.first);
    const auto last = static_cast<std::uint32_t>(file.last);
    m_behindLast = last + 1;
    return m_entryList.Append(Format("%08X|%08X|", first, last) + file.path + "\r\n") && AppendBound(first) &&
           AppendBound(last);
}

bool CSideLists::EndWriting() {
    AppendBound(m_behindLast);
    AppendBound(m_behindLast + 1);
    const bool boundsWritten = m_bounds.EndWriting();
    return m_entryList.EndWriting() && boundsWritten;
}

const std::string& CSideLists::FailureText() const {
    return m_entryList.FailureText().empty() ? m_bounds.FailureText() : m_entryList.FailureText();
}

std::uint32_t CSideLists::BoundAt(std::int64_t position) {
    std::array<std::uint8_t, kBoundSize> bytes = {};
    m_bounds.ReadAt(position, bytes);
    return LoadLe32(bytes);
}

std::uint32_t CSideLists::SectorBehindLast() {
    return BoundAt(m_bounds.Size() - 2 * kBoundSize);
}

std::optional<CSideLists::SPlacedFile> CSideLists::Next(CLineBuffer& line) {
    if (!m_lines) {
        m_lines.emplace([this](std::int64_t position, std::span<std::uint8_t> buffer) {
            return m_entryList.ReadAt(position, buffer);
        });
    }
    if (!m_lines->ReadLine(line)) {
        return std::nullopt;
    }
    SPlacedFile file;
    file.first = HexadecimalOf(line.Piece(0, kHexDigits));
    file.path = line.Piece(kPathColumn, line.Text().size() - kPathColumn);
    if (file.path.empty()) {
        return std::nullopt;
    }
    file.last = BoundAt(m_nextPair);
    const std::uint32_t next = BoundAt(m_nextPair + kBoundSize);
    file.gap = static_cast<std::int64_t>(next) - file.last - 1;
    m_nextPair += 2 * kBoundSize;
    return file;
}

void CSideLists::EndReading() {
    m_entryList.EndReading();
    m_bounds.EndReading();
}

void CSideLists::Remove() {
    m_bounds.Remove();
    m_entryList.Remove();
}

}  // namespace vantrel
