#include "app/converter/batch_line.h"

#include <algorithm>
#include <string_view>

#include "files/native_file.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr const char* kMode2Switch = "/mode2";
constexpr const char* kPostgapSwitch = "/postgap";
/// The command processor tries this name before the converter's own.
constexpr const char* kPreferredName = "tmpfile.com";

bool IsPlain(std::string_view text, std::string_view alsoPlain) {
    return std::all_of(text.begin(), text.end(), [alsoPlain](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
               (character >= '0' && character <= '9') || alsoPlain.find(character) != std::string_view::npos;
    });
}

bool IsNetworkFolder(std::string_view folder) {
    return folder.size() >= 2 && folder[0] == folder[1] && (folder[0] == '\\' || folder[0] == '/');
}

}  // namespace

std::string BatchLineOf(const SConverterCall& call) {
    std::string line = Format("tmpfile %s %s %s", call.inputName.c_str(), call.outputName.c_str(), kMode2Switch);
    if (call.postgap) {
        line += ' ';
        line += kPostgapSwitch;
    }
    return line + '\n';
}

std::vector<std::string> ArgumentsOf(const SConverterCall& call) {
    std::vector<std::string> arguments = {call.inputName, call.outputName, kMode2Switch};
    if (call.postgap) {
        arguments.emplace_back(kPostgapSwitch);
    }
    return arguments;
}

bool IsBatchLineSafe(const std::string& folder, const SConverterCall& call) {
    constexpr std::string_view kPlainInNames = "._-";
    constexpr std::string_view kPlainInFolders = "._- :\\/";
    return IsPlain(call.inputName, kPlainInNames) && IsPlain(call.outputName, kPlainInNames) &&
           IsPlain(folder, kPlainInFolders) && !IsNetworkFolder(folder) &&
           FileKindOf(folder + kPreferredName) == EFileKind::Missing;
}

}  // namespace vantrel
