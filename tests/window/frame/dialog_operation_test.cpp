// The window as the runner of a conversion: order of the completion, control states, panes and bar, focus.
#include "app/ui/dialog_operation.h"

#include <commctrl.h>
#include <gmock/gmock.h>

#include <algorithm>

#include "operation/progress.h"
#include "tests/window/driver/poll.h"
#include "tests/window/frame/frame_dialog.h"

namespace vantrel::test {
namespace {

using ::testing::ElementsAre;

constexpr UINT_PTR kBoxTimer = 77;
constexpr UINT_PTR kSubclassId = 9;

/// The events in their order. Global, because the functions of the system get no other context.
std::vector<std::string> g_events;

/// The status bar whose percentage is recorded before the event that follows its change; null for none.
HWND g_bar = nullptr;
std::wstring g_percent;

std::wstring PaneText(HWND bar, int pane) {
    const auto index = static_cast<WPARAM>(pane);
    std::wstring text(LOWORD(SendMessageW(bar, SB_GETTEXTLENGTHW, index, 0)), L'\0');
    SendMessageW(bar, SB_GETTEXTW, index, reinterpret_cast<LPARAM>(text.data()));
    return text;
}

void Note(const std::string& event) {
    const std::wstring percent = g_bar == nullptr ? g_percent : PaneText(g_bar, 3);
    if (percent != g_percent) {
        g_percent = percent;
        g_events.push_back("percentage " + std::string(percent.begin(), percent.end()));
    }
    g_events.push_back(event);
}

/// Records that the dialog accepts dropped files again, and the end of the bar.
LRESULT CALLBACK WatchDialog(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    if (message == WM_STYLECHANGED && static_cast<int>(wParam) == GWL_EXSTYLE) {
        const auto* const change = reinterpret_cast<const STYLESTRUCT*>(lParam);
        Note((change->styleNew & WS_EX_ACCEPTFILES) != 0 ? "drops" : "no drops");
    } else if (message == WM_NCDESTROY) {
        Note("bar gone");
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

LRESULT CALLBACK Watch(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    const int id = GetDlgCtrlID(window);
    if (message == CB_SETCURSEL && id == IDC_SOUND) {
        Note("select sound " + std::to_string(static_cast<int>(wParam)));
    } else if (message == CB_GETLBTEXT && id == IDC_SOUND) {
        Note("read sound " + std::to_string(static_cast<int>(wParam)));
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

/// Every call for a control, also if it is in that state already.
BOOL WINAPI RecordEnable(HWND window, BOOL isEnabled) {
    Note((isEnabled != FALSE ? "enable " : "disable ") + std::to_string(GetDlgCtrlID(window)));
    static const auto systemFunction = reinterpret_cast<decltype(&EnableWindow)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "EnableWindow")));
    return systemFunction(window, isEnabled);
}

std::wstring BoxText(HWND box) {
    std::wstring text(256, L'\0');
    text.resize(static_cast<std::size_t>(GetDlgItemTextW(box, 0xFFFF, text.data(), static_cast<int>(text.size()))));
    return text;
}

/// Records and closes the message box over the dialog.
void CALLBACK CloseBox(HWND dialog, UINT, UINT_PTR timer, DWORD) {
    const HWND box = GetLastActivePopup(dialog);
    if (box != nullptr && box != dialog && GetDlgItem(box, 0xFFFF) != nullptr) {
        KillTimer(dialog, timer);
        const std::wstring text = BoxText(box);
        Note("box " + std::string(text.begin(), text.end()));
        PostMessageW(box, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
        PostMessageW(box, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    }
}

/// The control states of a completed conversion.
const std::vector<std::string> kCompleted = {"disable 1001", "disable 1005", "disable 1012", "disable 1021",
                                             "enable 1",     "disable 1032", "disable 1029", "disable 1030",
                                             "disable 1033", "disable 1034", "enable 1031"};

std::vector<std::string> Joined(std::vector<std::string> events, const std::vector<std::string>& more) {
    events.insert(events.end(), more.begin(), more.end());
    return events;
}

class CDialogOperationTest : public ::testing::Test {
protected:
    CDialogOperationTest() {
        m_statusBar.Create(m_dialog.Window());
        m_statusBar.SetPaneWidths({250, 100, 165});
        m_soundList.Attach(m_dialog.Item(IDC_SOUND));
        m_levelList.Attach(m_dialog.Item(IDC_COMPRESSION));
        m_soundList.Add(L"@No Sound Selected");
        m_soundList.Add(L"missing.wav");
        m_levelList.Add(L"1");
        m_levelList.Add(L"2");
        m_soundList.Select(1);
        m_operation.emplace(SOperationControls{m_dialog.Window(), m_dialog.Item(IDC_STATUS_LINE), m_loop, m_statusBar,
                                               m_soundList, m_levelList, m_workFolder, m_scratchText, m_doneMessage,
                                               [] { g_events.emplace_back("update data"); }});
        SetWindowSubclass(m_dialog.Item(IDC_SOUND), Watch, kSubclassId, 0);
        g_events.clear();
    }
    ~CDialogOperationTest() override {
        g_bar = nullptr;
        g_events.clear();
    }

    std::wstring Pane(int pane) const { return PaneText(m_statusBar.Handle(), pane); }
    HWND Bar() const { return FindWindowExW(m_dialog.Window(), nullptr, L"VantrelTimedProgress", nullptr); }

    CMessageLoop m_loop;
    CFrameDialog m_dialog;
    CStatusBar m_statusBar;
    CComboBox m_soundList;
    CComboBox m_levelList;
    std::wstring m_workFolder = L"Z:\\nowhere\\";
    std::wstring m_scratchText;
    std::wstring m_doneMessage;
    std::optional<CDialogOperation> m_operation;
};

TEST_F(CDialogOperationTest, CompletionHasItsOrder) {
    m_operation->Begin(EConversion::BinToIso);
    m_operation->SetTotal(4);
    g_events.clear();
    SetTimer(m_dialog.Window(), kBoxTimer, 50, CloseBox);
    EXPECT_TRUE(m_operation->Complete("All Done !", [&] {
        g_events.emplace_back("report");
        EXPECT_NE(Bar(), nullptr);
    }));
    EXPECT_EQ(g_events, Joined({"update data", "select sound 2", "read sound 1", "report",
                                "box All Done !\n[An Error Occured Attempting to play sound]"},
                               kCompleted));
    EXPECT_EQ(Pane(3), L"0%");
    EXPECT_EQ(m_doneMessage, L"All Done !");
    EXPECT_EQ(m_scratchText, L"0%");
    EXPECT_NE(GetWindowLongPtrW(m_dialog.Window(), GWL_EXSTYLE) & WS_EX_ACCEPTFILES, 0);
    EXPECT_EQ(Bar(), nullptr);
}

TEST_F(CDialogOperationTest, AfterTheBoxDropsPercentageButtonsAndBarFollow) {
    m_operation->Begin(EConversion::BinToIso);
    m_operation->SetTotal(4);
    m_operation->SetPane(EPane::Percent, "100%");
    SetWindowSubclass(m_dialog.Window(), WatchDialog, kSubclassId, 0);
    SetWindowSubclass(Bar(), WatchDialog, kSubclassId, 0);
    SetTimer(m_dialog.Window(), kBoxTimer, 50, CloseBox);
    g_bar = m_statusBar.Handle();
    g_percent = L"100%";
    m_operation->Complete("All Done !", [&] { g_events.clear(); });
    EXPECT_EQ(g_events,
              Joined(Joined({"box All Done !\n[An Error Occured Attempting to play sound]", "drops", "percentage 0%"},
                            kCompleted),
                     {"bar gone"}));
    RemoveWindowSubclass(m_dialog.Window(), WatchDialog, kSubclassId);
}

TEST_F(CDialogOperationTest, CompletionWithoutSelectionChangesNothing) {
    m_levelList.Select(1);
    m_doneMessage = L"of before";
    m_operation->Begin(EConversion::CsoToIso);
    m_operation->SetTotal(4);
    m_operation->SetPane(EPane::Percent, "100%");
    m_soundList.Select(-1);
    g_events.clear();
    bool reported = false;
    EXPECT_FALSE(m_operation->Complete("All Done !", [&] { reported = true; }));
    EXPECT_FALSE(reported);
    EXPECT_THAT(g_events, ElementsAre("update data", "select sound 2"));
    EXPECT_EQ(m_doneMessage, L"of before");
    EXPECT_FALSE(IsWindowEnabled(m_levelList.Handle())) << "the list is still greyed";
    EXPECT_EQ(Pane(3), L"100%");
    EXPECT_EQ(GetWindowLongPtrW(m_dialog.Window(), GWL_EXSTYLE) & WS_EX_ACCEPTFILES, 0);
}

/// The calls of a conversion that has been begun, has got its bar and has ended.
struct SRow {
    EConversion conversion;
    std::vector<std::string> atBegin;
    std::vector<std::string> withBar;
    std::vector<std::string> atEnd;
};

TEST_F(CDialogOperationTest, EachConversionSetsItsControlsInTheirOrder) {
    using enum EConversion;
    const std::vector<std::string> all = {"disable 1001", "disable 1005", "disable 1012", "disable 1021",
                                          "disable 1",    "disable 1032", "disable 1029", "disable 1030",
                                          "disable 1033", "disable 1034"};
    const std::vector<std::string> ofBinAndCso = {"disable 1001", "disable 1005", "disable 1012", "disable 1021",
                                                  "disable 1029", "disable 1030", "disable 1",    "disable 1032",
                                                  "disable 1033", "disable 1034"};
    const std::vector<std::string> ofExport = {"disable 1001", "disable 1005", "disable 1012", "disable 1021",
                                               "disable 1032", "disable 1029", "disable 1030", "disable 1033",
                                               "disable 1034", "disable 1"};
    const std::vector<std::string> ofPostgap = {"disable 1001", "disable 1005", "disable 1012", "disable 1021",
                                                "disable 1032", "disable 1030", "disable 1029"};
    const std::vector<std::string> levels = {"disable 1031"};
    const std::vector<std::string> rebuilt = {"disable 1001", "disable 1005", "disable 1012", "disable 1021",
                                              "enable 1"};
    const std::vector<std::string> exported = {"disable 1001", "disable 1005", "disable 1012",
                                               "disable 1021", "disable 1032", "disable 1029",
                                               "disable 1030", "enable 1025",  "enable 1026"};
    const std::vector<std::string> checked = {"enable 1", "enable 1031"};
    m_levelList.Select(1);
    for (const SRow& row : {SRow{IsoToIml, ofExport, {}, exported},
                            {ImlToIso, all, {}, rebuilt},
                            {ImlToCdImage, all, {}, rebuilt},
                            {ImlToDvdImage, all, {}, rebuilt},
                            {IsoToBin, ofBinAndCso, {}, {}},
                            {BinToIso, all, {}, {}},
                            {IsoToCso, Joined(ofBinAndCso, levels), {}, {}},
                            {CsoToIso, Joined(all, levels), {}, {}},
                            {IsoToDax, Joined(all, levels), {}, {}},
                            {DaxToIso, all, {}, {}},
                            {CheckPostgap, Joined(ofPostgap, {"disable 1033", "disable 1034"}), {}, checked},
                            {AddPostgap, ofPostgap, levels, checked}}) {
        SCOPED_TRACE(static_cast<int>(row.conversion));
        g_events.clear();
        m_operation->Begin(row.conversion);
        EXPECT_EQ(g_events, row.atBegin);
        g_events.clear();
        m_operation->SetTotal(2);
        EXPECT_EQ(g_events, row.withBar);
        g_events.clear();
        m_operation->End();
        EXPECT_EQ(g_events, row.atEnd);
    }
}

TEST_F(CDialogOperationTest, BeginKeepsTheLevelListIfNoLevelIsSelected) {
    m_operation->Begin(EConversion::IsoToCso);
    EXPECT_TRUE(IsWindowEnabled(m_levelList.Handle()));
}

TEST_F(CDialogOperationTest, AddPostgapGreysTheLevelListWithTheBar) {
    m_levelList.Select(1);
    m_operation->Begin(EConversion::AddPostgap);
    EXPECT_TRUE(IsWindowEnabled(m_levelList.Handle()));
    m_operation->SetTotal(2);
    EXPECT_FALSE(IsWindowEnabled(m_levelList.Handle()));
    EXPECT_NE(Bar(), nullptr);
    m_operation->End();
    EXPECT_TRUE(IsWindowEnabled(m_levelList.Handle()));
    EXPECT_NE(GetWindowLongPtrW(m_dialog.Window(), GWL_EXSTYLE) & WS_EX_ACCEPTFILES, 0);
}

TEST_F(CDialogOperationTest, EndAppliesTheEndingOfTheLastConversion) {
    m_operation->Begin(EConversion::ImlToIso);
    m_operation->Begin(EConversion::ImlToDvdImage);
    g_events.clear();
    m_operation->End();
    EXPECT_THAT(g_events, ElementsAre("disable 1001", "disable 1005", "disable 1012", "disable 1021", "enable 1"));
    EXPECT_EQ(GetWindowLongPtrW(m_dialog.Window(), GWL_EXSTYLE) & WS_EX_ACCEPTFILES, 0);
}

TEST_F(CDialogOperationTest, EndCancelledLetsTheUserChooseAnotherInput) {
    m_operation->Begin(EConversion::IsoToIml);
    g_events.clear();
    m_operation->EndCancelled();
    EXPECT_THAT(g_events, ElementsAre("enable 1", "enable 1031"));
    EXPECT_NE(GetWindowLongPtrW(m_dialog.Window(), GWL_EXSTYLE) & WS_EX_ACCEPTFILES, 0);
}

TEST_F(CDialogOperationTest, TheBarHolds32Bits) {
    m_operation->Begin(EConversion::BinToIso);
    m_operation->SetTotal(std::int64_t{1} << 40);
    EXPECT_EQ(SendMessageW(Bar(), PBM_GETRANGE, FALSE, 0), 0x7FFFFFFF);
    m_operation->SetDone(std::int64_t{1} << 39);
    EXPECT_EQ(SendMessageW(Bar(), PBM_GETPOS, 0, 0), 0x7FFFFFFF);
}

TEST_F(CDialogOperationTest, PanesAndBarAreExactAfterEveryUnit) {
    constexpr std::int64_t kUnits = 500;
    m_operation->Begin(EConversion::ImlToCdImage);
    CProgress progress(*m_operation, kUnits);
    for (std::int64_t unit = 0; unit < kUnits; ++unit) {
        progress.AdvanceWithBytes(2048);
        ASSERT_EQ(Pane(1), std::to_wstring((unit + 1) * 2048) + L" bytes");
        ASSERT_EQ(Pane(3), std::to_wstring((unit + 1) * 100 / kUnits) + L"%");
        ASSERT_EQ(SendMessageW(Bar(), PBM_GETPOS, 0, 0), unit + 1);
    }
    EXPECT_EQ(m_scratchText, L"100%");
}

TEST_F(CDialogOperationTest, FocusLeavesAGreyedButtonAndReturnsToTheBrowseButton) {
    SetForegroundWindow(m_dialog.Window());
    SetFocus(m_dialog.Item(IDC_ISO_TO_CSO));
    ASSERT_EQ(GetFocus(), m_dialog.Item(IDC_ISO_TO_CSO));
    m_operation->Begin(EConversion::BinToIso);
    EXPECT_EQ(GetFocus(), m_dialog.Item(IDC_ALWAYS_ON_TOP));
    m_operation->EndCancelled();
    EXPECT_EQ(GetFocus(), m_dialog.Item(IDC_BROWSE));
}

TEST_F(CDialogOperationTest, PumpMessagesPostsTheQuitMessageAgain) {
    PostQuitMessage(0);
    EXPECT_EQ(PumpMessages(m_loop), 0);
    MSG message{};
    ASSERT_NE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE), FALSE);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    EXPECT_EQ(PumpMessages(m_loop), 1);
}

/// The queue delivers WM_QUIT before input and timers, so a pump that stopped there would block both.
TEST_F(CDialogOperationTest, PumpMessagesProcessesWhatFollowsTheQuitMessage) {
    constexpr UINT_PTR kTimer = 78;
    SetTimer(m_dialog.Window(), kTimer, 10, [](HWND dialog, UINT, UINT_PTR timer, DWORD) {
        KillTimer(dialog, timer);
        g_events.emplace_back("timer");
    });
    PostQuitMessage(0);
    Require("expired timer", [] { return (HIWORD(GetQueueStatus(QS_TIMER)) & QS_TIMER) != 0; });
    EXPECT_EQ(PumpMessages(m_loop), 0);
    EXPECT_THAT(g_events, ElementsAre("timer"));
    MSG message{};
    EXPECT_NE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), FALSE);
}

TEST_F(CDialogOperationTest, ABoxStaysOpenWhileTheProgramIsAboutToQuit) {
    SetTimer(m_dialog.Window(), kBoxTimer, 50, CloseBox);
    PostQuitMessage(0);
    m_operation->Notify("Read this");
    EXPECT_THAT(g_events, ElementsAre("box Read this"));
    MSG message{};
    EXPECT_NE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), FALSE);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
}

}  // namespace
}  // namespace vantrel::test

// The operation calls EnableWindow through this pointer, which the import library would define.
extern "C" {
extern const decltype(&EnableWindow) __imp_EnableWindow;
const decltype(&EnableWindow) __imp_EnableWindow = vantrel::test::RecordEnable;
}
