// The "iso2iml" button: exports the chosen image and asks for the path of the layout.
#include "app/layout_clock.h"
#include "app/main_dialog.h"
#include "app/message_box.h"
#include "app/ui/image_file_dialog.h"
#include "files/native_file.h"
#include "files/path.h"
#include "files/utf.h"
#include "resources/resource_ids.h"

namespace vantrel {
namespace {

constexpr wchar_t kLayoutFilter[] =
    L"iml Files (*.iml)\x01*.iml\x01"
    L"All files (*.*)\x01*.*\x01";

/// Characters of the current folder and of the path field that are used.
constexpr std::size_t kPathLimit = 260;

constexpr std::int32_t kLayoutChosen = 1;
constexpr std::int32_t kChoiceCancelled = -1;

}  // namespace

void CMainDialog::OnIsoToIml() {
    Convert([this](const SInput& input, CDialogOperation& operation) {
        const auto chooseImlPath = [this] { return ChooseImlPath(); };
        IsoToIml(input.folder, input.fileName, chooseImlPath, operation, SystemLayoutTime);
        if (m_exportState == kChoiceCancelled) {
            operation.EndCancelled();
        } else {
            operation.End();
        }
    });
}

std::optional<SChosenLayout> CMainDialog::ChooseImlPath() {
    CImageFileDialog dialog(CImageFileDialog::EPurpose::Save, m_window, WideOf(CurrentFolder()).substr(0, kPathLimit),
                            L"", FilterOf(kLayoutFilter));
    if (!dialog.DoModal()) {
        m_exportState = kChoiceCancelled;
        ShowMessage(m_window, WideOf(kExportCancelledText), WideOf(kExportCancelledCaption));
        return std::nullopt;
    }
    Item(IDC_OUTPUT_FOLDER).SetText(WideOf(WithSeparator(Utf8Of(dialog.FolderPath()))));
    Item(IDC_OUTPUT_NAME).SetText(dialog.FileName());
    m_exportState = kLayoutChosen;
    UpdateWindow(m_window);
    return SChosenLayout{LayoutPathOf(Utf8Of(FieldText(IDC_OUTPUT_FOLDER)), Utf8Of(FieldText(IDC_OUTPUT_NAME))),
                         Utf8Of(Item(IDC_IML_PATH).Text().substr(0, kPathLimit))};
}

}  // namespace vantrel
