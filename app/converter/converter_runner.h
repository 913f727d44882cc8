// What the window's conversion to a raw image needs from the system: to place, start and remove the converter program.
#pragma once

#include <string>
#include <vector>

namespace vantrel {

/// The window implements it with real processes, tests with a record of calls. Folders end in their separator.
class CConverterRunner {
public:
    virtual ~CConverterRunner() = default;

    /// Writes the carried converter to "~tmp.zzz", copies it to "tmpfile.exe" in `folder`, and deletes "~tmp.zzz".
    virtual void PlaceConverter(const std::string& folder) = 0;

    /// Starts the batch file `name` in `folder`, hidden, with `folder` as the current folder.
    virtual void StartBatchFile(const std::string& folder, const std::string& name) = 0;

    /// Starts "tmpfile.exe" in `folder` with these arguments, quoted, in the same way.
    virtual void StartConverter(const std::string& folder, const std::vector<std::string>& arguments) = 0;

    /// Whether the started program has ended; true if nothing could be started. Does not wait.
    virtual bool HasFinished() = 0;

    /// Deletes "tmpfile.exe" in `folder`.
    virtual void RemoveConverter(const std::string& folder) = 0;
};

}  // namespace vantrel
