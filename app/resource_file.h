// Extracts files from the program's resources: the default sound and the raw-sector converter.
#pragma once

#include <string>

namespace vantrel {

/// The folder of the program's executable, with its closing separator. Empty if it cannot be determined.
std::wstring ProgramFolder();

/// Writes the resource `id` of the given type to the file `fileName` in the program's folder; an existing file is
/// replaced. `writtenPath` receives the full path. Returns false if there is no such resource, if the file cannot be
/// written in full or, after a message box, if the folder cannot be determined.
bool WriteResourceFile(const std::wstring& fileName, const wchar_t* type, int id, std::wstring& writtenPath);

/// The same with a full path.
bool WriteResourceTo(const std::wstring& path, const wchar_t* type, int id);

}  // namespace vantrel
