#include "files/staging.h"

#include <algorithm>
#include <string_view>

#include "files/leftovers.h"
#include "files/path.h"
#include "files/temporary_path.h"

namespace vantrel {

namespace {

constexpr int kNameTries = 100;

bool IsSeparator(char c) {
    return c == '/' || c == kPathSeparator;
}

}  // namespace

bool LiesBelow(std::string_view folder, std::string_view path) {
    if (!path.starts_with(folder)) {
        return false;
    }
    path.remove_prefix(folder.size());
    if (path.empty() || IsSeparator(path.front()) || !SplitPath(path).drive.empty()) {
        return false;
    }
    while (!path.empty()) {
        const auto end = static_cast<std::size_t>(std::find_if(path.begin(), path.end(), IsSeparator) - path.begin());
        if (path.substr(0, end) == "..") {
            return false;
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return true;
}

CStaging::~CStaging() {
    Undo();
}

bool CStaging::Fail(const std::string& text) {
    m_problem = text + ": " + LastFileError();
    return false;
}

bool CStaging::Open(const std::string& base) {
    m_base = base;
    for (int attempt = 0; attempt < kNameTries; ++attempt) {
        const std::string path = TemporaryPathIn(base);
        if (FileKindOf(path) != EFileKind::Missing) {
            continue;
        }
        if (!MakeFolder(path)) {
            break;
        }
        m_path = WithSeparator(path);
        // Another process may take the folder for a leftover, and remove it, until it is locked.
        const std::string lock = m_path + kStagingLock;
        const bool isOpen = m_lock.Open(lock, EOpenMode::CreateNew, ESharing::Readers);
        const bool isLocked = isOpen && m_lock.TakeLock() != ELock::Refused && FileKindOf(lock) != EFileKind::Missing;
        if (isLocked && MakeFolder(m_path + kStagedFolder)) {
            return true;
        }
        if (isOpen == isLocked && FileKindOf(path) != EFileKind::Missing) {
            return Fail("Cannot create a file or folder in " + m_path);
        }
        m_path.clear();
    }
    return Fail("Cannot create a folder in " + (base.empty() ? "." : base));
}

std::string CStaging::PlaceOf(const std::string& target) const {
    return m_path + WithSeparator(kStagedFolder) + target.substr(m_base.size());
}

bool CStaging::MakeFolders(const std::string& target) {
    const std::string place = PlaceOf(target);
    const std::string folder = FolderOf(place);
    if (folder == m_lastFolder) {
        return true;
    }
    const std::size_t start = m_path.size() + WithSeparator(kStagedFolder).size();
    for (std::size_t i = start; i < place.size(); ++i) {
        if (IsSeparator(place[i]) && !MakeFolder(place.substr(0, i))) {
            return Fail("Cannot create the folder " + m_base + place.substr(start, i - start));
        }
    }
    m_lastFolder = folder;
    return true;
}

bool CStaging::Add(COutputFile& output) {
    const std::string place = PlaceOf(output.TargetPath());
    if (!output.CommitAs(place)) {
        m_problem = output.Problem();
        return false;
    }
    m_folders.insert(FolderOf(output.TargetPath()));
    if (output.Flushes()) {
        m_flushes = true;
    } else {
        m_unflushed.push_back(place);
    }
    return true;
}

/// Writes the waiting outputs to the disk that have not done so, because they replace nothing.
bool CStaging::FlushOutputs() {
    const auto isFlushed = [this](const std::string& place) {
        CNativeFile file;
        return (file.Open(place, EOpenMode::ReadWrite, ESharing::Anyone) && file.FlushToDisk() && file.Close()) ||
               Fail("Cannot write " + place);
    };
    return std::all_of(m_unflushed.begin(), m_unflushed.end(), isFlushed);
}

/// Writes the names of the waiting outputs to the disk, in their folders and those above. The name of "staged" itself
/// follows when it is renamed.
bool CStaging::FlushFolders() {
    std::set<std::string> places = {m_base, m_path + WithSeparator(kStagedFolder)};
    for (const std::string& folder : m_folders) {
        for (std::string place = PlaceOf(folder); place.size() > m_path.size();
             place = FolderOf(place.substr(0, place.size() - 1))) {
            places.insert(place);
        }
    }
    return std::all_of(places.begin(), places.end(), FlushFolder) || Fail("Cannot write the folder " + m_path);
}

bool CStaging::Commit(bool replace) {
    if (m_flushes && !(FlushOutputs() && FlushFolders())) {
        return false;
    }
    const std::string complete = m_path + kCompleteFolder;
    if (!RenameFile(m_path + kStagedFolder, complete, false)) {
        return Fail("Cannot rename " + m_path + kStagedFolder);
    }
    if (m_flushes && !FlushFolder(m_path)) {
        return Fail("Cannot write the folder " + m_path);
    }
    return MoveAll(WithSeparator(complete), m_base, replace) && (!m_flushes || FlushTargets());
}

bool CStaging::FlushTargets() {
    std::set<std::string> folders;
    for (const SGiven& given : m_given) {
        folders.insert(FolderOf(given.target));
    }
    return std::all_of(folders.begin(), folders.end(), FlushFolder) || Fail("Cannot write the folder " + m_base);
}

bool CStaging::MoveAll(const std::string& from, const std::string& to, bool replace) {
    for (const std::string& name : ListFolder(from)) {
        const std::string target = to + name;
        const bool merges = FileKindOf(from + name) == EFileKind::Folder && FileKindOf(target) == EFileKind::Folder;
        if (!(merges ? MoveAll(WithSeparator(from + name), WithSeparator(target), replace)
                     : Move(from + name, target, replace))) {
            return false;
        }
    }
    return RemoveEmptied(from) || Fail("Cannot remove " + from);  // fails if the list of names was incomplete
}

bool CStaging::KeepOlder(const std::string& target, const std::string& older) {
    return LinkFile(target, older) || RenameFile(target, older, false) || Fail("Cannot replace " + target);
}

/// Gives a replaced file its name back. If another process prevents that, keeps it where no run removes it.
void CStaging::Restore(const SGiven& given) {
    if (RenameFile(given.older, given.target, true)) {
        RemoveFile(given.older);  // renaming a hard link to its other name does nothing
        return;
    }
    const std::string kept = m_path + kKeptFile + FileNameOf(given.older) + '-' + FileNameOf(given.target);
    if (!IsSameFile(given.older, given.target) && RenameFile(given.older, kept, false)) {
        m_kept += "; the older file is now " + kept;
    }
}

bool CStaging::Move(const std::string& from, const std::string& to, bool replace) {
    SGiven given = {replace ? ResolveLink(to) : to, ""};
    const bool replaces = replace && FileKindOf(given.target) == EFileKind::File;
    if (replaces) {
        given.older = m_path + kReplacedFile + std::to_string(m_given.size());
        if (!KeepOlder(given.target, given.older)) {
            return false;
        }
    }
    if (!RenameFile(from, given.target, replaces)) {
        Fail("Cannot write " + given.target);
        if (replaces) {
            Restore(given);
        }
        return false;
    }
    m_given.push_back(std::move(given));
    return true;
}

void CStaging::Undo() {
    if (m_path.empty()) {
        return;
    }
    // From here on, the outputs are incomplete for other processes.
    RenameFile(m_path + kCompleteFolder, m_path + kStagedFolder, false);
    for (; !m_given.empty(); m_given.pop_back()) {
        const SGiven& given = m_given.back();
        if (given.older.empty()) {
            RenameFile(given.target, m_path + kUndoneFile + std::to_string(m_given.size()), false);
        } else {
            Restore(given);
        }
    }
    Remove();
}

void CStaging::Keep() {
    m_given.clear();
    Remove();
}

void CStaging::Remove() {
    if (!m_path.empty()) {
        RemoveStaging(m_path, m_lock);
        m_path.clear();
    }
}

}  // namespace vantrel
