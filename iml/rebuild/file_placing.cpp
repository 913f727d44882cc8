#include "iml/rebuild/file_placing.h"

#include <algorithm>
#include <array>

#include "iml/layout/layout_path.h"
#include "iso/iso9660.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// The first bytes of a padding; the rest is zeros.
constexpr std::array<std::uint8_t, 10> kPaddingMark = {0x0B, 0x02, 0x13, 0x06, 0x01, 0x1A, 0x0C, 0x03, 0x15, 0x08};

/// Bytes between the end of a file and the next sector. The padding of an empty file is a whole sector.
std::int64_t PaddingOf(std::int64_t length) {
    const std::int64_t partial = length % kSectorSize;
    return length == 0 || partial != 0 ? kSectorSize - partial : 0;
}

}  // namespace

void CFilePlacing::Show(const SPlacement& file) {
    m_operation.SetPane(EPane::File, ShownPath(file.path));
}

void CFilePlacing::Place(const SPlacement& file, std::int64_t gap) {
    const std::int64_t length = m_writer.OpenListed(file.path);
    m_total += length + m_lastPadding;
    m_operation.SetPane(EPane::Bytes, BytesText(m_total));
    m_writer.CopyListed(file.path, length);
    m_lastPadding = PaddingOf(length);
    WritePadding(m_lastPadding);
    m_writer.WriteGap(gap);
}

void CFilePlacing::WritePadding(std::int64_t count) {
    if (count > 0) {
        std::array<std::uint8_t, kSectorSize> padding = {};
        std::copy(kPaddingMark.begin(), kPaddingMark.end(), padding.begin());
        m_writer.Write(std::span(padding).first(static_cast<std::size_t>(count)));
    }
}

}  // namespace vantrel
