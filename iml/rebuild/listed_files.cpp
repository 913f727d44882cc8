#include "iml/rebuild/listed_files.h"

#include "operation/text.h"

namespace vantrel {

bool ReplacesLeading(const SRebuildRequest& request) {
    return FileKindOf(request.outputPath) != EFileKind::Missing && IsSameFile(request.leadingPath, request.outputPath);
}

CListedFiles::CListedFiles(const SRebuildRequest& request, COperation& operation)
    : m_request(request),
      m_operation(operation),
      m_resolver(request.filesFolder),
      m_replaces(FileKindOf(request.outputPath) != EFileKind::Missing),
      m_replacedLength(FileSizeOf(request.outputPath)) {}

std::string CListedFiles::OpenOrFail(const std::string& listedPath, CCheckedInput& file) {
    std::string found = m_resolver.Resolve(listedPath);
    // Reading a pipe or a device might never end.
    const EFileKind kind = FileKindOf(found);
    if (kind != EFileKind::File || !file.Open(found)) {
        const char* const hint =
            m_request.rule == ERebuildRule::Edited ? "; an empty file in its place empties it in the image" : "";
        const std::string cause = kind == EFileKind::Missing ? found + ": no such file" + hint
                                  : kind == EFileKind::Other ? found + ": not a regular file"
                                                             : OpeningProblem(found);
        m_operation.Fail(Format("Code 3041 - Error!!! Opening [%s]", listedPath.c_str()), cause);
    }
    const std::int64_t length = file.SizeOrFail();
    const bool mayBeReplaced = m_replaces && (m_replacedLength < 0 || m_replacedLength == length);
    if (m_request.strict && mayBeReplaced && IsSameFile(found, m_request.outputPath)) {
        m_operation.Fail(Format("The image would replace %s, which the layout lists", found.c_str()));
    }
    return found;
}

}  // namespace vantrel
