#include "app/resource_file.h"

#include <windows.h>

#include <cstdint>
#include <span>

#include "app/message_box.h"
#include "files/output_file.h"
#include "files/utf.h"

namespace vantrel {
namespace {

/// Characters of the longest path in Windows.
constexpr std::size_t kLongestPath = 32768;

/// The bytes of a resource of this program, valid as long as the program runs. Empty if there is no such resource.
std::span<const std::uint8_t> ResourceBytes(const wchar_t* type, int id) {
    const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(id), type);
    if (resource == nullptr) {
        return {};
    }
    const HGLOBAL loaded = LoadResource(nullptr, resource);
    const void* bytes = loaded == nullptr ? nullptr : LockResource(loaded);
    if (bytes == nullptr) {
        return {};
    }
    return {static_cast<const std::uint8_t*>(bytes), SizeofResource(nullptr, resource)};
}

}  // namespace

std::wstring ProgramFolder() {
    std::wstring path(kLongestPath, L'\0');
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0 || length >= path.size()) {
        return {};
    }
    path.resize(length);
    const std::size_t separator = path.find_last_of(L"\\/");
    return separator == std::wstring::npos ? std::wstring() : path.substr(0, separator + 1);
}

bool WriteResourceFile(const std::wstring& fileName, const wchar_t* type, int id, std::wstring& writtenPath) {
    const std::wstring folder = ProgramFolder();
    if (folder.empty()) {
        ShowMessage(GetActiveWindow(), L"Unable to get exe location");
        return false;
    }
    writtenPath = folder + fileName;
    return WriteResourceTo(writtenPath, type, id);
}

bool WriteResourceTo(const std::wstring& path, const wchar_t* type, int id) {
    const std::span<const std::uint8_t> bytes = ResourceBytes(type, id);
    if (bytes.empty()) {
        return false;
    }
    COutputFile file;
    return file.Open(Utf8Of(path), EOutputManner::InPlace) && file.Write(bytes);
}

}  // namespace vantrel
