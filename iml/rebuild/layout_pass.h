// The first pass of a rebuild: the list of files in the layout becomes placements.
#pragma once

#include "files/checked_file.h"
#include "files/native_file.h"
#include "iml/layout/layout_reader.h"
#include "iml/rebuild/placements.h"
#include "iml/rebuild/rebuild.h"
#include "operation/operation.h"

namespace vantrel {

class CLayoutPass {
public:
    CLayoutPass(const SRebuildRequest& request, const SLayoutShape& shape, CPlacements& placements,
                COperation& operation)
        : m_request(request),
          m_shape(shape),
          m_placements(placements),
          m_operation(operation),
          m_bytes(operation),
          m_text(operation) {}

    /// Shows the start text and fills the placements. Fails with the codes 2011a (CD), 2011, 2021a (DVD) and 2012 if
    /// the layout cannot be opened or reopened, with those of CPlacements, and for a layout of another medium or
    /// without a list.
    void Run();

    /// Last sector of the leading structures in the layout; -1 if unknown.
    std::int32_t LeadingLast() const { return m_head.leadingLast; }

private:
    void OpenFiles();
    void CheckMedia();
    void ReadHead();
    void CheckHead();
    void Reopen();
    void ListFiles();
    bool ListFile(CTextReader& text);
    void CheckSectors(const SListedFile& file);
    /// Fails with a text of one "%s", which stands for the layout.
    [[noreturn]] void Refuse(const char* pattern);

    const SRebuildRequest& m_request;
    SLayoutShape m_shape;
    CPlacements& m_placements;
    COperation& m_operation;
    CCheckedInput m_bytes;
    CCheckedInput m_text;
    CNativeFile m_update;
    CLineBuffer m_line;
    SListHead m_head;
    std::int64_t m_announced = 0;  ///< Number of files by the count line; may be negative.
};

}  // namespace vantrel
