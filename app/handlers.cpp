// The conversions behind the buttons of the main dialog: each handler names the files of the chosen input and calls the
// engine.
// clang-format off
#include <windows.h>
#include <shellapi.h>  // needs the types of windows.h
// clang-format on

#include "app/converter/converter_conversion.h"
#include "app/converter/converter_process.h"
#include "app/main_dialog.h"
#include "compress/cso.h"
#include "compress/dax.h"
#include "iml/rebuild/rebuild.h"
#include "iso/postgap.h"
#include "raw/bin_to_iso.h"

namespace vantrel {
namespace {

SCompressionRequest WithLevel(SCompressionRequest request, std::optional<int> level) {
    request.level = level;
    return request;
}

}  // namespace

void CMainDialog::Convert(const std::function<void(const SInput&, CDialogOperation&)>& conversion) {
    const bool acceptedDrops = (GetWindowLongPtrW(m_window, GWL_EXSTYLE) & WS_EX_ACCEPTFILES) != 0;
    m_converting = true;
    DragAcceptFiles(m_window, FALSE);
    {
        CDialogOperation operation({m_window, m_statusText.Handle(), m_loop, m_statusBar, m_soundCombo,
                                    m_compressionCombo, m_workFolder, m_scratchText, m_doneMessage,
                                    [this] { UpdateData(); }});
        conversion(ReadInput(), operation);
    }
    m_converting = false;
    if (acceptedDrops) {
        DragAcceptFiles(m_window, TRUE);
    }
}

void CMainDialog::OnIsoToCso() {
    Convert([](const SInput& input, CDialogOperation& operation) {
        IsoToCso(WithLevel(WindowCompression(input.folder, input.fileName, ".cso"), input.level), operation);
    });
}

void CMainDialog::OnCsoToIso() {
    Convert([](const SInput& input, CDialogOperation& operation) {
        CsoToIso(WithLevel(WindowExpansion(input.folder, input.fileName), input.level), operation);
    });
}

void CMainDialog::OnIsoToDax() {
    Convert([](const SInput& input, CDialogOperation& operation) {
        IsoToDax(WithLevel(WindowCompression(input.folder, input.fileName, ".dax"), input.level), operation);
    });
}

void CMainDialog::OnDaxToIso() {
    Convert([](const SInput& input, CDialogOperation& operation) {
        DaxToIso(WindowDaxExpansion(input.folder, input.fileName), operation);
    });
}

void CMainDialog::OnIsoToBin() {
    Convert([](const SInput& input, CDialogOperation& operation) {
        CConverterProcess converter;
        IsoToBinByConverter(input.folder, input.fileName, converter, operation);
    });
}

void CMainDialog::OnBinToIso() {
    Convert([](const SInput& input, CDialogOperation& operation) {
        BinToIso(WindowBinToIso(input.folder, input.fileName), operation);
    });
}

void CMainDialog::OnVantrel() {
    Convert([](const SInput& input, CDialogOperation& operation) {
        RebuildImage(WindowRebuild(input.folder, input.fileName), operation);
        operation.End();
    });
}

void CMainDialog::OnCheckPostgap() {
    Convert([](const SInput& input, CDialogOperation& operation) {
        CheckPostgap({.imagePath = input.Path()}, operation);
        operation.End();
    });
}

/// Nothing in the window enables the button, but its command works.
void CMainDialog::OnAddSelectivePostgap() {
    Convert([](const SInput& input, CDialogOperation& operation) {
        if (AddSelectivePostgap({.imagePath = input.Path(), .sectors = input.level}, operation)) {
            operation.End();
        }
    });
}

}  // namespace vantrel
