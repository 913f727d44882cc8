#include "files/temporary_folder.h"

#include <random>

#include "files/native_file.h"
#include "files/path.h"
#include "files/temporary_path.h"
#include "operation/text.h"

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
    std::random_device random;
    for (int attempt = 0; attempt < kNameTries; ++attempt) {
        const std::string path = parent + Format(".vantrel-%08x.tmp", random());
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
