// Placing of one listed file as both rebuilds do it: content, padding with its mark, gap up to the next file.
#pragma once

#include <cstdint>

#include "iml/rebuild/image_writer.h"
#include "iml/rebuild/placements.h"
#include "operation/operation.h"

namespace vantrel {

class CFilePlacing {
public:
    CFilePlacing(CImageWriter& writer, COperation& operation, std::int64_t bytesSoFar)
        : m_writer(writer), m_operation(operation), m_total(bytesSoFar) {}

    /// Shows the file that is next.
    void Show(const CSideLists::SPlacedFile& file);
    /// Writes it, its padding and the gap behind it at the output's position.
    void Place(const CSideLists::SPlacedFile& file);

private:
    void WritePadding(std::int64_t count);

    CImageWriter& m_writer;
    COperation& m_operation;
    std::int64_t m_total;            ///< Bytes shown: lengths and paddings.
    std::int64_t m_lastPadding = 0;  ///< Counted with the next file.
};

}  // namespace vantrel
