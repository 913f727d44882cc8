// Places one listed file: content, padding with its mark, gap up to the next file. For both rebuilds.
#pragma once

#include <cstdint>

#include "iml/rebuild/image_writer.h"
#include "iml/rebuild/placements.h"
#include "operation/operation.h"

namespace vantrel {

class CFilePlacing {
public:
    CFilePlacing(CImageWriter& writer, COperation& operation)
        : m_writer(writer), m_operation(operation), m_total(writer.LeadingLength()) {}

    /// Shows the next file.
    void Show(const SPlacement& file);
    /// Writes it, its padding and the gap behind it at the current position of the output.
    void Place(const SPlacement& file, std::int64_t gap);

private:
    void WritePadding(std::int64_t count);

    CImageWriter& m_writer;
    COperation& m_operation;
    std::int64_t m_total;            ///< Bytes shown: lengths and paddings.
    std::int64_t m_lastPadding = 0;  ///< Shown with the next file.
};

}  // namespace vantrel
