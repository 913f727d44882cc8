// A folder in which outputs wait until all of them are complete. They then get their names together: as soon as the
// folder says so, another process finishes what this one began if it is killed; see leftovers.h.
//
// The folder is named like a temporary file and holds a locked file "lock"; "staged" with the outputs, in the same
// folders below it as their targets below the base; "new", the name of "staged" once all outputs are complete; and
// replaced files, "old-0" and so on. A replaced file that cannot be restored stays as "kept-old-0-NAME".
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "files/native_file.h"
#include "files/output_file.h"

namespace vantrel {

/// Whether a path leads to something in a folder, which ends in a separator or is empty, or below it.
bool LiesBelow(std::string_view folder, std::string_view path);

class CStaging {
public:
    CStaging() = default;
    CStaging(const CStaging&) = delete;
    CStaging& operator=(const CStaging&) = delete;
    /// Undoes everything unless Keep was called.
    ~CStaging();

    /// Makes the folder in `base`, which ends in a separator or is empty. Returns false if that fails; Problem() then
    /// has the cause, as for all other calls.
    bool Open(const std::string& base);
    /// Whether a target lies in the base or in a folder below it.
    bool Covers(const std::string& target) const { return LiesBelow(m_base, target); }
    /// Where an output for a target waits.
    std::string PlaceOf(const std::string& target) const;
    /// Makes the folders above PlaceOf(target).
    bool MakeFolders(const std::string& target);
    /// Finishes an output and puts it where it waits. Its folders must exist.
    bool Add(COutputFile& output);

    /// Gives all outputs their names. Existing files are replaced if `replace` is set and are a failure otherwise. If
    /// it fails, call Undo.
    bool Commit(bool replace);
    /// Restores everything as it was before Open.
    void Undo();
    /// Makes the commit permanent.
    void Keep();

    const std::string& Problem() const { return m_problem; }
    /// What to add to the problem: where replaced files are that Undo could not restore. Mostly empty.
    const std::string& Kept() const { return m_kept; }

private:
    /// A name given, and where the replaced file is (empty if there was none).
    struct SGiven {
        std::string target;
        std::string older;
    };

    bool FlushOutputs();
    bool FlushFolders();
    bool FlushTargets();
    bool MoveAll(const std::string& from, const std::string& to, bool replace);
    bool Move(const std::string& from, const std::string& to, bool replace);
    bool KeepOlder(const std::string& target, const std::string& older);
    void Restore(const SGiven& given);
    void Remove();
    bool Fail(const std::string& text);

    std::string m_base;
    std::string m_path;  ///< With its closing separator; empty if there is no folder.
    CNativeFile m_lock;
    std::string m_lastFolder;              ///< The folder that MakeFolders made last.
    bool m_flushes = false;                ///< Whether an output does.
    std::set<std::string> m_folders;       ///< Those with outputs.
    std::vector<std::string> m_unflushed;  ///< Where outputs wait that do not.
    std::vector<SGiven> m_given;
    std::string m_problem;
    std::string m_kept;
};

}  // namespace vantrel
