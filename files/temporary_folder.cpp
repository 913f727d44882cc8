#include "files/temporary_folder.h"

#include "files/native_file.h"
#include "files/path.h"
#include "files/temporary_path.h"

namespace vantrel {

namespace {

constexpr int kNameTries = 100;

}  // namespace

CTemporaryFolder::~CTemporaryFolder() {
    // A cause such as a file that is still open may be gone at the second try.
    if (!m_path.empty() && !Remove()) {
        Remove();
    }
}

bool CTemporaryFolder::Remove() const {
    for (const std::string& name : ListFolder(m_path)) {
        RemoveTemporary(m_path + name);
    }
    return RemoveFolder(m_path);
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
