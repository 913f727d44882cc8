// The "vantrel" button, which rebuilds an image from the chosen layout, and the buttons of the postgap.
#include "app/main_dialog.h"
#include "iso/postgap.h"
#include "iml/rebuild/rebuild.h"

namespace vantrel {

void CMainDialog::OnVantrel() {
    Convert([](const SInput& input, COperation& operation) {
        Vantrel(WindowRebuild(input.folder, input.fileName), operation);
    });
}

void CMainDialog::OnCheckPostgap() {
    Convert([](const SInput& input, COperation& operation) { CheckPostgap({input.Path()}, operation); });
}

/// No part of the window enables the button; its command works all the same.
void CMainDialog::OnAddSelectivePostgap() {
    Convert([](const SInput& input, COperation& operation) { AddSelectivePostgap({input.Path()}, operation); });
}

}  // namespace vantrel
