// The files on the disk that a layout lists. For all rebuilds.
#pragma once

#include <cstdint>
#include <string>

#include "files/checked_file.h"
#include "iml/layout/layout_path.h"
#include "iml/rebuild/rebuild.h"
#include "operation/operation.h"

namespace vantrel {

/// Whether the image would replace the file with its leading structures.
bool ReplacesLeading(const SRebuildRequest& request);

class CListedFiles {
public:
    CListedFiles(const SRebuildRequest& request, COperation& operation);

    /// Opens the file of a path of the layout and returns its path on the disk. Fails with code 3041, and, if strict,
    /// for a file that the image would replace.
    std::string OpenOrFail(const std::string& listedPath, CCheckedInput& file);

private:
    const SRebuildRequest& m_request;
    COperation& m_operation;
    CPathResolver m_resolver;
    bool m_replaces;                ///< Whether the target exists, so that a listed file might be the target.
    std::int64_t m_replacedLength;  ///< Length of the existing target; -1 if unknown.
};

}  // namespace vantrel
