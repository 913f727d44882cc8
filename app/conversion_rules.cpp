#include "app/conversion_rules.h"

#include <algorithm>

#include "resources/resource_ids.h"

namespace vantrel {
namespace {

constexpr int kGreyed[] = {IDC_ISO_TO_IML,    IDC_VANTREL,    IDC_ISO_TO_BIN, IDC_BIN_TO_ISO, IDC_BROWSE,
                           IDC_CHECK_POSTGAP, IDC_ISO_TO_DAX, IDC_DAX_TO_ISO, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO};
constexpr int kGreyedByExport[] = {IDC_ISO_TO_IML, IDC_VANTREL,    IDC_ISO_TO_BIN, IDC_BIN_TO_ISO, IDC_CHECK_POSTGAP,
                                   IDC_ISO_TO_DAX, IDC_DAX_TO_ISO, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO, IDC_BROWSE};
constexpr int kGreyedByBinAndCso[] = {IDC_ISO_TO_IML, IDC_VANTREL, IDC_ISO_TO_BIN,    IDC_BIN_TO_ISO, IDC_ISO_TO_DAX,
                                      IDC_DAX_TO_ISO, IDC_BROWSE,  IDC_CHECK_POSTGAP, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO};
/// The postgap commands leave the browse button enabled.
constexpr int kGreyedByPostgap[] = {IDC_ISO_TO_IML, IDC_VANTREL,    IDC_ISO_TO_BIN, IDC_BIN_TO_ISO, IDC_CHECK_POSTGAP,
                                    IDC_DAX_TO_ISO, IDC_ISO_TO_DAX, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO};

constexpr SControlState kAfterCompletion[] = {
    {IDC_ISO_TO_IML, false}, {IDC_VANTREL, false},       {IDC_ISO_TO_BIN, false}, {IDC_BIN_TO_ISO, false},
    {IDC_BROWSE, true},      {IDC_CHECK_POSTGAP, false}, {IDC_ISO_TO_DAX, false}, {IDC_DAX_TO_ISO, false},
    {IDC_ISO_TO_CSO, false}, {IDC_CSO_TO_ISO, false},    {IDC_COMPRESSION, true},
};
constexpr SControlState kAfterExport[] = {
    {IDC_ISO_TO_IML, false}, {IDC_VANTREL, false},       {IDC_ISO_TO_BIN, false},
    {IDC_BIN_TO_ISO, false}, {IDC_CHECK_POSTGAP, false}, {IDC_ISO_TO_DAX, false},
    {IDC_DAX_TO_ISO, false}, {IDC_FULL_PATH, true},      {IDC_RELATIVE_PATH, true},
};
constexpr SControlState kAfterRebuild[] = {
    {IDC_ISO_TO_IML, false}, {IDC_VANTREL, false}, {IDC_ISO_TO_BIN, false}, {IDC_BIN_TO_ISO, false}, {IDC_BROWSE, true},
};
constexpr SControlState kInputChoice[] = {{IDC_BROWSE, true}, {IDC_COMPRESSION, true}};

constexpr SEnding kInputChoiceEnding = {kInputChoice, true};
constexpr SEnding kExportEnding = {kAfterExport, false};
constexpr SEnding kRebuildEnding = {kAfterRebuild, false};
constexpr SEnding kNoEnding = {};

using enum EConversion;
using enum ELevelList;

constexpr SConversionRules kRules[] = {
    {IsoToIml, kGreyedByExport, Unused, IDB_PROGRESS_DVD, kExportEnding},
    {ImlToIso, kGreyed, Unused, IDB_PROGRESS_DVD, kRebuildEnding},
    {ImlToCdImage, kGreyed, Unused, IDB_PROGRESS_CD, kRebuildEnding},
    {ImlToDvdImage, kGreyed, Unused, IDB_PROGRESS_DVD, kRebuildEnding},
    {IsoToBin, kGreyedByBinAndCso, Unused, IDB_PROGRESS_DVD, kNoEnding},
    {BinToIso, kGreyed, Unused, IDB_PROGRESS_DVD, kNoEnding},
    {IsoToCso, kGreyedByBinAndCso, GreyedAtBegin, IDB_PROGRESS_DVD, kNoEnding},
    {CsoToIso, kGreyed, GreyedAtBegin, IDB_PROGRESS_DVD, kNoEnding},
    {IsoToDax, kGreyed, GreyedAtBegin, IDB_PROGRESS_DVD, kNoEnding},
    {DaxToIso, kGreyed, Unused, IDB_PROGRESS_DVD, kNoEnding},
    {CheckPostgap, kGreyedByPostgap, Unused, IDB_PROGRESS_CD, kInputChoiceEnding},
    {AddPostgap, std::span(kGreyedByPostgap).first<7>(), GreyedWithBar, IDB_PROGRESS_CD, kInputChoiceEnding},
};

}  // namespace

const SConversionRules& RulesOf(EConversion conversion) {
    return *std::ranges::find(kRules, conversion, &SConversionRules::conversion);
}

std::span<const SControlState> CompletionStates() {
    return kAfterCompletion;
}

const SEnding& CancelEnding() {
    return kInputChoiceEnding;
}

}  // namespace vantrel
