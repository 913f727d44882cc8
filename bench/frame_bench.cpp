// The cost of the window per unit of work: of the message pump alone, and of the whole update after a unit (percentage,
// bar, byte count, messages) through the program's runner. Both are measured alternately in one run.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "app/ui/dialog.h"
#include "app/ui/dialog_operation.h"
#include "operation/progress.h"
#include "resources/resource_ids.h"

// clang-format off
#include <windows.h>
#include <objbase.h>  // needs the types of windows.h
// clang-format on

namespace vantrel {
namespace {

constexpr std::int64_t kUnits = 20'000;
constexpr std::uint32_t kUnitBytes = 2048;
constexpr int kRounds = 5;

/// The program's dialog, which runs empty units of work instead of conversions.
class CBenchDialog : public CDialog {
public:
    explicit CBenchDialog(CMessageLoop& loop) : CDialog(IDD_MAIN), m_loop(loop) {}

    const std::vector<double>& PumpTimes() const { return m_pump; }
    const std::vector<double>& FrameTimes() const { return m_frame; }

protected:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_INITDIALOG) {
            m_statusBar.Create(m_window);
            m_statusBar.SetPaneWidths({250, 100, 165});
            m_statusBar.SetBackground(RGB(180, 180, 180));
            m_soundList.Attach(Item(IDC_SOUND).Handle());
            m_levelList.Attach(Item(IDC_COMPRESSION).Handle());
            PostMessageW(m_window, WM_APP, 0, 0);
            return TRUE;
        }
        if (message == WM_APP) {
            for (int round = 0; round < kRounds; ++round) {
                m_pump.push_back(TimeOf([this] { PumpMessages(m_loop); }));
                MeasureFrame();
            }
            PostQuitMessage(0);
            return 0;
        }
        return Default(message, wParam, lParam);
    }

private:
    /// Microseconds per call.
    template <typename Work>
    double TimeOf(const Work& work) {
        const auto start = std::chrono::steady_clock::now();
        for (std::int64_t i = 0; i < kUnits; ++i) {
            work();
        }
        const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
        return elapsed.count() / static_cast<double>(kUnits);
    }

    void MeasureFrame() {
        CDialogOperation operation({m_window, Item(IDC_STATUS_LINE).Handle(), m_loop, m_statusBar, m_soundList,
                                    m_levelList, m_workFolder, m_scratchText, m_doneMessage, [] {}});
        operation.Begin(EConversion::BinToIso);
        CProgress progress(operation, kUnits);
        m_frame.push_back(TimeOf([&] { progress.AdvanceWithBytes(kUnitBytes); }));
    }

    CMessageLoop& m_loop;
    CStatusBar m_statusBar;
    CComboBox m_soundList;
    CComboBox m_levelList;
    std::wstring m_workFolder;
    std::wstring m_scratchText;
    std::wstring m_doneMessage;
    std::vector<double> m_pump;
    std::vector<double> m_frame;
};

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace
}  // namespace vantrel

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    vantrel::CMessageLoop loop;
    vantrel::CBenchDialog dialog(loop);
    dialog.DoModal(loop);
    if (dialog.FrameTimes().empty()) {
        std::printf("the dialog did not open\n");
        return 1;
    }
    const double pump = vantrel::Median(dialog.PumpTimes());
    const double frame = vantrel::Median(dialog.FrameTimes());
    std::printf("message pump alone: %6.1f us per unit\n", pump);
    std::printf("update and pump:    %6.1f us per unit, %.1f times the pump\n", frame, frame / pump);
    return 0;
}
