#include "image/form.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "files/input_file.h"
#include "files/refused.h"
#include "iso/iso9660.h"
#include "raw/cue_reader.h"
#include "raw/raw_sector.h"

namespace vantrel {

namespace {

constexpr std::int64_t kStandardIdentifierPosition = kPrimaryVolumePosition + 1;

bool HasBytes(CByteSource& file, std::int64_t position, std::string_view wanted) {
    std::array<std::uint8_t, kSync.size()> bytes = {};
    const auto read = std::span(bytes).first(wanted.size());
    return file.ReadAt(position, read) == wanted.size() &&
           std::equal(read.begin(), read.end(), wanted.begin(),
                      [](std::uint8_t byte, char c) { return byte == static_cast<std::uint8_t>(c); });
}

}  // namespace

EForm FormOf(CByteSource& file) {
    using namespace std::string_view_literals;
    const std::string_view sync(reinterpret_cast<const char*>(kSync.data()), kSync.size());
    if (HasBytes(file, 0, "CISO"sv)) {
        return EForm::Cso;
    }
    if (HasBytes(file, 0, "ZISO"sv)) {
        return EForm::Zso;
    }
    if (HasBytes(file, 0, "DAX\0"sv)) {
        return EForm::Dax;
    }
    if (HasBytes(file, 0, sync)) {
        return EForm::Bin;
    }
    if (HasBytes(file, kStandardIdentifierPosition, "CD001"sv)) {
        return EForm::Iso;
    }
    if (HasBytes(file, 0, "[SYS]"sv)) {
        return EForm::Iml;
    }
    return IsCueSheet(file) ? EForm::Cue : EForm::Unknown;
}

EForm FormOfFile(const std::string& path) {
    CInputFile file;
    if (!file.Open(path)) {
        throw CRefused(path + ": " + LastFileError());
    }
    const EForm form = FormOf(file);
    if (file.HasFailed()) {
        throw CRefused(file.Problem());
    }
    return form;
}

const char* NameOf(EForm form) {
    switch (form) {
        case EForm::Iso:
            return "ISO";
        case EForm::Cso:
            return "CSO";
        case EForm::Zso:
            return "ZSO";
        case EForm::Dax:
            return "DAX";
        case EForm::Bin:
            return "BIN";
        case EForm::Iml:
            return "IML";
        case EForm::Cue:
            return "CUE";
        case EForm::Unknown:
            break;
    }
    return "unknown";
}

}  // namespace vantrel
