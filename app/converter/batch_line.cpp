#include "app/converter/batch_line.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "files/native_file.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// The command processor prefers this program to "tmpfile.exe".
constexpr const char* kPreferredName = "tmpfile.com";

/// With this variable, the command processor does not look for programs in its current folder.
constexpr const char* kNoCurrentFolder = "NoDefaultCurrentDirectoryInExePath";

/// Whether a text consists of ASCII letters, digits and the characters of `others` only.
bool IsPlain(std::string_view text, std::string_view others) {
    return std::all_of(text.begin(), text.end(), [others](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
               (character >= '0' && character <= '9') || others.find(character) != std::string_view::npos;
    });
}

bool IsNetworkFolder(std::string_view folder) {
    return folder.size() >= 2 && folder[0] == folder[1] && (folder[0] == '\\' || folder[0] == '/');
}

}  // namespace

std::string BatchLineOf(const SConverterCall& call) {
    return Format(call.postgap ? "tmpfile %s %s /mode2 /postgap\n" : "tmpfile %s %s /mode2\n", call.inputName.c_str(),
                  call.outputName.c_str());
}

std::vector<std::string> ArgumentsOf(const SConverterCall& call) {
    std::vector<std::string> arguments = {call.inputName, call.outputName, "/mode2"};
    if (call.postgap) {
        arguments.emplace_back("/postgap");
    }
    return arguments;
}

bool IsBatchLineSafe(const std::string& folder, const SConverterCall& call) {
    constexpr std::string_view kPlainInNames = "._-";
    constexpr std::string_view kPlainInFolders = "._- :\\/";
    return IsPlain(call.inputName, kPlainInNames) && IsPlain(call.outputName, kPlainInNames) &&
           IsPlain(folder, kPlainInFolders) && !IsNetworkFolder(folder) && std::getenv(kNoCurrentFolder) == nullptr &&
           FileKindOf(folder + kPreferredName) == EFileKind::Missing;
}

}  // namespace vantrel
