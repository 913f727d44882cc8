// The conversions behind the buttons of the main dialog: each takes the chosen input, names its files and calls the
// engine.
#include "app/converter/converter_process.h"
#include "app/main_dialog.h"
#include "compress/cso.h"
#include "compress/dax.h"
#include "raw/bin_to_iso.h"
#include "raw/iso_to_bin.h"

namespace vantrel {

void CMainDialog::Convert(const std::function<void(const SInput&, COperation&)>& conversion) {
    m_converting = true;
    {
        CDialogOperation operation({m_window, m_statusText.Handle(), m_loop, m_statusBar, m_soundCombo,
                                    m_compressionCombo, m_workFolder, m_scratchText, m_doneMessage,
                                    [this] { UpdateData(); }});
        conversion(ReadInput(), operation);
    }
    m_converting = false;
}

void CMainDialog::OnIsoToCso() {
    Convert([](const SInput& input, COperation& operation) {
        IsoToCso(WindowCompression(input.folder, input.fileName, ".cso"), operation);
    });
}

void CMainDialog::OnCsoToIso() {
    Convert([](const SInput& input, COperation& operation) {
        CsoToIso(WindowExpansion(input.folder, input.fileName), operation);
    });
}

void CMainDialog::OnIsoToDax() {
    Convert([](const SInput& input, COperation& operation) {
        IsoToDax(WindowCompression(input.folder, input.fileName, ".dax"), operation);
    });
}

void CMainDialog::OnDaxToIso() {
    Convert([](const SInput& input, COperation& operation) {
        DaxToIso(WindowDaxExpansion(input.folder, input.fileName), operation);
    });
}

void CMainDialog::OnIsoToBin() {
    Convert([](const SInput& input, COperation& operation) {
        CConverterProcess converter;
        IsoToBin({input.folder, input.fileName}, converter, operation);
    });
}

void CMainDialog::OnBinToIso() {
    Convert([](const SInput& input, COperation& operation) {
        BinToIso(WindowBinToIso(input.folder, input.fileName), operation);
    });
}

}  // namespace vantrel
