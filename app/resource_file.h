// Files that the program carries among its resources and writes out: the default sound and the raw-sector converter.
#pragma once

#include <string>

namespace vantrel {

/// The folder of the program's own executable with its closing separator; empty when the system does not tell.
std::wstring ProgramFolder();

/// Writes the resource `id` of the given type to a file of this name in the program's own folder, over an existing
/// one. `writtenPath` becomes the file's full path. False when there is no such resource or the file could not be
/// written completely; when the folder cannot be told, a message box says so first.
bool WriteResourceFile(const std::wstring& fileName, const wchar_t* type, int id, std::wstring& writtenPath);

/// Writes the resource to exactly this path, over an existing file. False like above.
bool WriteResourceTo(const std::wstring& path, const wchar_t* type, int id);

}  // namespace vantrel
