#include "files/temporary_folder.h"

#include "files/native_file.h"
#include "files/path.h"
#include "files/temporary_path.h"

namespace vantrel {

namespace {

constexpr int kNameTries = 100;

}  // namespace

CTemporaryFolder::~CTemporaryFolder() {
    if (!m_path.empty()) {
        RemoveEmptied(m_path);
    }
}

bool CTemporaryFolder::MakeIn(const std::string& parent) {
    for (int attempt = 0; attempt < kNameTries; ++attempt) {
        const std::string path = TemporaryPathIn(parent);
        if (FileKindOf(path) != EFileKind::Missing) {
            continue;
        }
        if (!MakeFolder(path)) {
            return false;
        }
        m_path = WithSeparator(path);
        return true;
    }
    return false;
}

}  // namespace vantrel
