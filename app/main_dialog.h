// The main dialog: its controls, their commands and the state of the program.
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

namespace vantrel {

/// What the user has chosen for a conversion. Texts are UTF-8.
struct SInput {
    std::string folder;        ///< With its closing separator.
    std::string fileName;      ///< In lower case.
    std::optional<int> level;  ///< Compression level from 1; nothing if none is selected in the list.

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

    /// A control that has a command. Rows with an icon are the icon buttons, in their order.
    struct SCommand {
        int controlId = 0;
        Handler handler = nullptr;
        int iconId = 0;
        const wchar_t* toolTip = nullptr;
        int notification = BN_CLICKED;
    };
    static const SCommand kCommands[];
    static const SCommand& CommandOf(int controlId);
    static constexpr std::size_t kIconButtonCount = 13;

    // Start and end (main_dialog.cpp)
    void OnInitDialog();
    void AddAboutItem();
    void CreateStatusBar();
    void TakeWorkFolder();
    void AttachIconButtons();
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
    void ShowStates(const ButtonStates& states);

    void ShowImlPath(const std::wstring& path);
    void LeaveGreyedControl(HWND former);
    void OnSoundChange();

    // Looks (window_behaviour.cpp)
    void OnCreate();
    void PlayClosingAnimation();
    bool OnSysCommand(WPARAM command);
    bool OnPaint();
    void OnAlwaysOnTop();
    void OnEffect();
    HICON OnQueryDragIcon() const { return m_hIcon; }
    bool OnTimer(UINT_PTR timer);
    void OnMouseMove(LPARAM position);
    void OnLButtonDown(LPARAM position);

    // Conversions (handlers.cpp, export_handler.cpp)
    void OnIsoToCso();
    void OnCsoToIso();
    void OnIsoToDax();
    void OnDaxToIso();
    void OnIsoToBin();
    void OnBinToIso();
    void OnIsoToIml();
    std::optional<SChosenLayout> ChooseImlPath();
    void OnVantrel();
    void OnCheckPostgap();
    void OnAddSelectivePostgap();

    /// Runs a conversion of the chosen input with this window as its runner.
    void Convert(const std::function<void(const SInput&, CDialogOperation&)>& conversion);
    SInput ReadInput() const;
    std::wstring FieldText(int controlId) const;
    /// Copies the values of the fields and lists to the members.
    void UpdateData();

    CMessageLoop& m_loop;
    bool m_converting = false;

    HICON m_hIcon;
    CStatusBar m_statusBar;
    std::array<CIconButton, kIconButtonCount> m_iconButtons;
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
    std::int32_t m_exportState = 0;  ///< 1 after a layout was chosen, −1 after the choice was cancelled.
    CToolTipCtrl m_toolTip;
};

}  // namespace vantrel
