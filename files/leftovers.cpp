#include "files/leftovers.h"

#include <algorithm>
#include <vector>

#include "files/path.h"
#include "files/temporary_path.h"

namespace vantrel {

namespace {

/// Not a link to one, whose contents are not ours.
bool IsFolder(const std::string& path) {
    return FileKindOf(path) == EFileKind::Folder && ResolveLink(path) == path;
}

void RemoveTree(const std::string& path) {
    const std::string folder = WithSeparator(path);
    for (const std::string& name : ListFolder(folder)) {
        if (IsFolder(folder + name)) {
            RemoveTree(folder + name);
        } else {
            RemoveTemporary(folder + name);
        }
    }
    RemoveFolder(path);
}

/// Removes what is in a folder of waiting outputs, except its lock and kept files.
void RemoveWaiting(const std::string& path) {
    for (const std::string& name : ListFolder(path)) {
        if (name == kStagingLock || name.starts_with(kKeptFile)) {
            continue;
        }
        if (IsFolder(path + name)) {
            RemoveTree(path + name);
        } else {
            RemoveTemporary(path + name);
        }
    }
}

/// Moves everything in one folder into another. Both end in a separator; the second may be empty.
void MoveAll(const std::string& from, const std::string& to) {
    for (const std::string& name : ListFolder(from)) {
        const std::string target = to + name;
        if (IsFolder(from + name) && FileKindOf(target) == EFileKind::Folder) {
            MoveAll(WithSeparator(from + name), WithSeparator(target));
        } else {
            RenameFile(from + name, ResolveLink(target), true);
        }
    }
}

/// Not so for an empty folder, which another process may just have made.
bool AreWaitingOutputs(const std::vector<std::string>& names) {
    return !names.empty() && std::all_of(names.begin(), names.end(), [](const std::string& name) {
        return name == kStagedFolder || name == kCompleteFolder || name.starts_with(kReplacedFile) ||
               name.starts_with(kUndoneFile);
    });
}

void FinishStaging(const std::string& path, const std::string& base) {
    CNativeFile lock;
    const auto hasLock = [&path] { return FileKindOf(path + kStagingLock) != EFileKind::Missing; };
    if (!hasLock()) {
        // Its process, which makes the lock first and removes it last, was killed then; or a power cut took the name of
        // the lock but not all others.
        if (RemoveFolder(path)) {
            return;
        }
        // A living process makes the lock before anything else, so what is seen before the lock is missed is its
        // leftover.
        const std::vector<std::string> names = ListFolder(path);
        if (hasLock() || !AreWaitingOutputs(names)) {
            return;
        }
    } else if (!lock.Open(path + kStagingLock, EOpenMode::ReadWrite, ESharing::Nobody) ||
               lock.TakeLock() != ELock::Taken) {
        return;
    }
    MoveAll(path + WithSeparator(kCompleteFolder), base);
    RemoveStaging(path, lock);
}

}  // namespace

void RemoveLeftovers(const std::string& folder) {
    for (const std::string& name : ListFolder(folder.empty() ? "." : folder)) {
        const std::string path = folder + name;
        if (!IsTemporaryName(name)) {
            continue;
        }
        if (IsFolder(path)) {
            FinishStaging(WithSeparator(path), folder);
        } else if (FileKindOf(path) == EFileKind::File) {
            RemoveUnused(path);
        }
    }
}

void RemoveStaging(const std::string& path, CNativeFile& lock) {
    RemoveWaiting(path);
    // While it is locked, where the system removes open files: who waits for the lock of a removed file has lost.
    RemoveFile(path + kStagingLock);
    lock.Close();
    RemoveTemporary(path + kStagingLock);
    if (!RemoveFolder(path)) {
        RemoveWaiting(path);  // what could not be removed at the first try
        RemoveTemporary(path + kStagingLock);
        RemoveFolder(path);
    }
}

}  // namespace vantrel
