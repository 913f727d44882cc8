// What the window's conversion to a raw image needs of the system: a converter program beside the image, running.
#pragma once

#include <string>
#include <vector>

namespace vantrel {

/// The window implements it with the system's processes; tests implement it with a record of calls. Folders end in the
/// separator.
class CConverterRunner {
public:
    virtual ~CConverterRunner() = default;

    /// Writes the carried converter to "~tmp.zzz", copies it to "tmpfile.exe" in `folder`, and deletes "~tmp.zzz".
    virtual void PlaceConverter(const std::string& folder) = 0;

    /// Starts the batch file of this name in `folder`, hidden, with the folder as its current one.
    virtual void StartBatchFile(const std::string& folder, const std::string& name) = 0;

    /// Starts "tmpfile.exe" in `folder` with these arguments, each quoted as needed, otherwise like the batch file.
    virtual void StartConverter(const std::string& folder, const std::vector<std::string>& arguments) = 0;

    /// Whether what was started has ended; true when nothing could be started. Returns at once.
    virtual bool HasFinished() = 0;

    /// Deletes "tmpfile.exe" in `folder`.
    virtual void RemoveConverter(const std::string& folder) = 0;
};

}  // namespace vantrel
