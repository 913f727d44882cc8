#include "console/command_input.h"

#include <algorithm>

#include "files/input_file.h"
#include "files/native_file.h"
#include "files/refused.h"
#include "raw/cue_reader.h"
#include "raw/raw_disc.h"

namespace vantrel {

namespace {

bool IsSheet(const std::string& path, std::string& problem) {
    CInputFile file;
    if (FileKindOf(path) != EFileKind::File) {
        return false;
    }
    if (!file.Open(path)) {
        problem = path + ": " + LastFileError();
        return false;
    }
    const bool isSheet = IsCueSheet(file);
    if (file.HasFailed()) {
        throw CRefused(file.Problem());
    }
    return isSheet;
}

}  // namespace

SCommandInput InputOf(const std::string& path) {
    SCommandInput input = {{path}, {}, {}, FileSizeOf(path)};
    if (IsSheet(path, input.problem)) {
        const SRawDisc disc = ReadRawDisc(path);
        const std::vector<std::string> named = disc.Files();
        input.files.insert(input.files.end(), named.begin(), named.end());
        input.bytes = disc.DataTrack().Bytes();
        for (const STrack& other : disc.OtherTracks()) {
            if (!other.IsAudio()) {
                input.unread.push_back(path + ": " + TextOfLeftOut(other));
            }
        }
    }
    std::erase_if(input.files, [](const std::string& file) { return FileKindOf(file) == EFileKind::Missing; });
    input.bytes = std::max<std::int64_t>(input.bytes, 0);
    return input;
}

}  // namespace vantrel
