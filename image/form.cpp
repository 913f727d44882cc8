#include "image/form.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "files/input_file.h"
#include "files/refused.h"
#include "image/forms.h"
#include "iso/iso9660.h"
#include "raw/cue_reader.h"
#include "raw/raw_sector.h"

namespace vantrel {

namespace {

using namespace std::string_view_literals;

constexpr std::int64_t kStandardIdentifierPosition = kPrimaryVolumePosition + 1;

bool HasBytes(CByteSource& file, std::int64_t position, std::string_view wanted) {
    constexpr std::size_t kLongestMark = 16;
    std::array<std::uint8_t, kLongestMark> bytes = {};
    const auto read = std::span(bytes).first(wanted.size());
    return file.ReadAt(position, read) == wanted.size() &&
           std::equal(read.begin(), read.end(), wanted.begin(),
                      [](std::uint8_t byte, char c) { return byte == static_cast<std::uint8_t>(c); });
}

bool BeginsWithSync(CByteSource& file) {
    return HasBytes(file, 0, {reinterpret_cast<const char*>(kSync.data()), kSync.size()});
}

/// An NRG file begins with the sectors of its first track; its mark stands before the position of the table at the end.
bool IsNrg(CByteSource& file) {
    return HasBytes(file, file.Size() - 12, "NER5"sv) || HasBytes(file, file.Size() - 8, "NERO"sv);
}

struct SFormRow {
    EForm form;
    const char* name;
    bool (*isForm)(CByteSource& file);
    /// Null for forms that are recognised by name only.
    std::unique_ptr<CImageSource> (*open)(const std::string& path);
};

/// A file has the first form that recognises it.
constexpr SFormRow kForms[] = {
    {EForm::Cso, "CSO", [](CByteSource& file) { return HasBytes(file, 0, "CISO"sv); }, OpenCsoImage},
    {EForm::Zso, "ZSO", [](CByteSource& file) { return HasBytes(file, 0, "ZISO"sv); }, OpenZsoImage},
    {EForm::Dax, "DAX", [](CByteSource& file) { return HasBytes(file, 0, "DAX\0"sv); }, OpenDaxImage},
    {EForm::Chd, "CHD", [](CByteSource& file) { return HasBytes(file, 0, "MComprHD"sv); }, nullptr},
    {EForm::Gz, "GZ", [](CByteSource& file) { return HasBytes(file, 0, "\x1F\x8B\x08"sv); }, nullptr},
    {EForm::SevenZip, "7Z", [](CByteSource& file) { return HasBytes(file, 0, "7z\xBC\xAF\x27\x1C"sv); }, nullptr},
    {EForm::Mdf, "MDF", [](CByteSource& file) { return HasBytes(file, 0, "MEDIA DESCRIPTOR"sv); }, nullptr},
    {EForm::Ecm, "ECM", [](CByteSource& file) { return HasBytes(file, 0, "ECM\0"sv); }, nullptr},
    {EForm::Pbp, "PBP", [](CByteSource& file) { return HasBytes(file, 0, "\0PBP"sv); }, nullptr},
    {EForm::Nrg, "NRG", IsNrg, nullptr},
    {EForm::Bin, "BIN", BeginsWithSync, OpenBinImage},
    {EForm::Iso, "ISO", [](CByteSource& file) { return HasBytes(file, kStandardIdentifierPosition, "CD001"sv); },
     OpenPlainImage},
    {EForm::Iml, "IML", [](CByteSource& file) { return HasBytes(file, 0, "[SYS]"sv); }, nullptr},
    {EForm::Cue, "CUE", IsCueSheet, OpenCueImage},
};

/// Null for an unknown form.
const SFormRow* RowOf(EForm form) {
    const auto* const row = std::ranges::find(kForms, form, &SFormRow::form);
    return row == std::end(kForms) ? nullptr : row;
}

}  // namespace

EForm FormOf(CByteSource& file) {
    const auto* const row = std::ranges::find_if(kForms, [&file](const SFormRow& form) { return form.isForm(file); });
    return row == std::end(kForms) ? EForm::Unknown : row->form;
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
    const SFormRow* const row = RowOf(form);
    return row != nullptr ? row->name : "unknown";
}

std::string FileOf(EForm form) {
    const std::string name = NameOf(form);
    const bool soundsLikeVowel = "EIMN"sv.find(name.front()) != std::string_view::npos;
    return (soundsLikeVowel ? "an " : "a ") + name + " file";
}

bool IsReadable(EForm form) {
    const SFormRow* const row = RowOf(form);
    return row != nullptr && row->open != nullptr;
}

std::unique_ptr<CImageSource> OpenImageAs(EForm form, const std::string& path) {
    if (IsReadable(form)) {
        return RowOf(form)->open(path);
    }
    if (form == EForm::Unknown) {
        throw CRefused(path + ": not a known kind of disc image");
    }
    throw CRefused(path + ": this is " + FileOf(form) +
                   (form == EForm::Iml ? ", which does not contain an image" : ", a form that is not read"));
}

}  // namespace vantrel
