// The one window of the program: its controls, its commands and the state that lives in them.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "app/input_rules.h"
#include "app/ui/dialog.h"
#include "app/ui/dialog_operation.h"
#include "app/ui/hover_cursor.h"
#include "app/ui/icon_button.h"
#include "app/ui/ripple_effect.h"
#include "app/ui/status_bar.h"
#include "app/ui/tool_tip_ctrl.h"
#include "app/ui/window_animation.h"
#include "iml/export/export.h"
#include "operation/operation.h"

namespace vantrel {

/// The chosen input as a conversion gets it, in UTF-8.
struct SInput {
    std::string folder;    ///< with its closing separator
    std::string fileName;  ///< folded to lower case by its field

    std::string Path() const { return folder + fileName; }
};

class CMainDialog : public CDialog {
public:
    explicit CMainDialog(CMessageLoop& loop);

    bool PreTranslateMessage(MSG& message) override;

protected:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    using Handler = void (CMainDialog::*)();

    /// A row of the command table: the notification of a control and who handles it.
    struct SCommand {
        int controlId;
        int notification;
        Handler handler;
    };
    static const SCommand kCommands[];

    // Start and end (main_dialog.cpp)
    void OnInitDialog();
    void AddAboutItem();
    void CreateStatusBar();
    void TakeWorkFolder();
    void SetButtonIcons();
    void SetAccessibleNames();
    void CreateToolTips();
    void FillSoundList();
    void AddSoundEntries();
    bool OnCommand(int controlId, int notification);
    void OnExit();
    void OnClose();

    // Choosing the input (input_selection.cpp)
    void OnBrowse();
    void OnDropFiles(WPARAM drop);
    void OnFullPath();
    void OnRelativePath();
    bool ApplyRules(const std::string& extension);
    void RejectInput(const wchar_t* text);
    void ShowStates(const CommandStates& states);

    void OnSoundChange();

    // Looks (window_behaviour.cpp)
    void OnCreate();
    void PlayClosingAnimation();
    bool OnSysCommand(WPARAM command);
    bool OnPaint();
    void OnAlwaysOnTop();
    void OnEffect();
    bool OnTimer(UINT_PTR timer);
    void DropRipple(LPARAM position, const SRippleDrop& drop);

    // Conversions (handlers.cpp)
    void OnIsoToCso();
    void OnCsoToIso();
    void OnIsoToDax();
    void OnDaxToIso();
    void OnIsoToBin();
    void OnBinToIso();

    // Export to a layout (export_handler.cpp)
    void OnIsoToIml();
    std::optional<SChosenLayout> ChooseImlPath();

    // Rebuild from a layout, and the postgap (rebuild_handlers.cpp)
    void OnVantrel();
    void OnCheckPostgap();
    void OnAddSelectivePostgap();

    /// Runs one conversion on the chosen input with this window as its runner.
    void Convert(const std::function<void(const SInput&, COperation&)>& conversion);
    SInput ReadInput() const;
    std::wstring FieldText(int controlId) const;
    /// Brings the values of the fields and lists to the members.
    void UpdateData();

    CMessageLoop& m_loop;
    bool m_converting = false;

    HICON m_hIcon;
    CStatusBar m_statusBar;
    std::array<CIconButton, 13> m_iconButtons;
    CHoverCursor m_buttonCursor;
    CComboBox m_compressionCombo;
    CComboBox m_soundCombo;
    CCheckBox m_effectCheck;
    CCheckBox m_topMostCheck;
    CWindow m_statusText;
    std::wstring m_scratchText;
    std::wstring m_fileName;
    std::wstring m_folder;
    std::int32_t m_soundIndex = -1;
    std::int32_t m_compressionIndex = -1;
    std::wstring m_workFolder;
    std::wstring m_doneMessage;
    CRippleEffect m_effect;
    CWindowAnimation m_animation;
    UINT_PTR m_effectTimer = 0;
    std::int32_t m_topMostFlag = 0;
    std::int32_t m_effectFlag = 0;
    std::int32_t m_exportState = 0;  ///< 1 once a layout was chosen, −1 when that was cancelled
    CToolTipCtrl m_toolTip;
};

}  // namespace vantrel
