// The progress bar: position, range, steps, answers to messages, painting.
#include "app/ui/timed_progress_ctrl.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "tests/window/frame/frame_dialog.h"

namespace vantrel::test {
namespace {

class CTimedProgressTest : public ::testing::Test {
protected:
    HWND Anchor() const { return m_dialog.Item(IDC_STATUS_LINE); }

    /// The colours along the middle of a bar, from left to right or top to bottom.
    static std::vector<COLORREF> Colours(const CTimedProgressCtrl& bar) {
        RECT client{};
        GetClientRect(bar.Handle(), &client);
        const HDC screen = GetDC(nullptr);
        const HDC memory = CreateCompatibleDC(screen);
        const HBITMAP bitmap = CreateCompatibleBitmap(screen, client.right, client.bottom);
        const HGDIOBJ old = SelectObject(memory, bitmap);
        bar.Send(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(memory), PRF_CLIENT);
        std::vector<COLORREF> colours;
        const bool isVertical = client.bottom > client.right;
        for (int i = 0; i < (isVertical ? client.bottom : client.right); ++i) {
            colours.push_back(isVertical ? GetPixel(memory, client.right / 2, i)
                                         : GetPixel(memory, i, client.bottom / 2));
        }
        SelectObject(memory, old);
        DeleteObject(bitmap);
        DeleteDC(memory);
        ReleaseDC(nullptr, screen);
        return colours;
    }

    /// The number of colours of the empty part.
    static std::size_t EmptyPart(const std::vector<COLORREF>& colours) {
        return static_cast<std::size_t>(std::count(colours.begin(), colours.end(), GetSysColor(COLOR_WINDOW)));
    }

    CFrameDialog m_dialog;
};

TEST_F(CTimedProgressTest, CoversItsAnchorAsItsSibling) {
    const CTimedProgressCtrl bar(Anchor(), 10, IDB_PROGRESS_DVD);
    RECT barRect{};
    RECT anchorRect{};
    GetWindowRect(bar.Handle(), &barRect);
    GetWindowRect(Anchor(), &anchorRect);
    EXPECT_NE(EqualRect(&barRect, &anchorRect), FALSE);
    EXPECT_EQ(GetParent(bar.Handle()), m_dialog.Window());
    EXPECT_NE(GetWindowLongPtrW(bar.Handle(), GWL_EXSTYLE) & WS_EX_STATICEDGE, 0);
    EXPECT_EQ(reinterpret_cast<HCURSOR>(GetClassLongPtrW(bar.Handle(), GCLP_HCURSOR)), LoadCursorW(nullptr, IDC_WAIT));
    EXPECT_EQ(bar.Text(), L"");
}

TEST_F(CTimedProgressTest, StepsByOneUpToItsEnd) {
    CTimedProgressCtrl bar(Anchor(), 3, IDB_PROGRESS_DVD);
    EXPECT_EQ(bar.StepIt(true), 0);
    EXPECT_EQ(bar.StepIt(false), 1);
    EXPECT_EQ(bar.StepIt(true), 2);
    EXPECT_EQ(bar.Position(), 3);
    EXPECT_EQ(bar.StepIt(true), 3);
    EXPECT_EQ(bar.Position(), 3);
}

TEST_F(CTimedProgressTest, StaysWithinTheWidestRange) {
    constexpr std::int32_t top = std::numeric_limits<std::int32_t>::max();
    CTimedProgressCtrl bar(Anchor(), top, IDB_PROGRESS_DVD);
    bar.SetPosition(top, true);
    EXPECT_EQ(bar.StepIt(true), top);
    EXPECT_EQ(bar.Position(), top);
    bar.SetPosition(-5, true);
    EXPECT_EQ(bar.Position(), 0);
}

TEST_F(CTimedProgressTest, DoesNothingWithoutItsWindow) {
    CTimedProgressCtrl bar(Anchor(), 3, IDB_PROGRESS_DVD);
    bar.StepIt(true);
    DestroyWindow(bar.Handle());
    EXPECT_EQ(bar.StepIt(true), 0);
    EXPECT_EQ(bar.StepIt(true), 0);
    EXPECT_EQ(bar.Position(), 1);
}

/// Without a window, an invalidation would concern all windows of the desktop.
TEST_F(CTimedProgressTest, PaintsNothingWithoutItsWindow) {
    CTimedProgressCtrl bar(Anchor(), 3, IDB_PROGRESS_DVD);
    bar.SetPosition(2, false);
    DestroyWindow(bar.Handle());
    UpdateWindow(m_dialog.Window());
    ValidateRect(m_dialog.Window(), nullptr);
    bar.PaintNow();
    EXPECT_EQ(GetUpdateRect(m_dialog.Window(), nullptr, FALSE), FALSE);
}

TEST_F(CTimedProgressTest, AnswersLikeNativeBars) {
    CTimedProgressCtrl bar(Anchor(), 200, IDB_PROGRESS_DVD);
    bar.SetPosition(150, true);
    EXPECT_EQ(bar.Send(PBM_GETPOS), 150);
    EXPECT_EQ(bar.Send(PBM_GETRANGE, TRUE), 0);
    PBRANGE range{};
    EXPECT_EQ(bar.Send(PBM_GETRANGE, FALSE, reinterpret_cast<LPARAM>(&range)), 200);
    EXPECT_EQ(range.iLow, 0);
    EXPECT_EQ(range.iHigh, 200);
    EXPECT_EQ(bar.Send(WM_GETOBJECT, 0, static_cast<LONG>(0xFFFFFFF4)), 65536 + 13);
}

TEST_F(CTimedProgressTest, HasACompleteFrame) {
    const CTimedProgressCtrl bar(Anchor(), 10, IDB_PROGRESS_DVD);
    RECT place{};
    GetWindowRect(bar.Handle(), &place);
    const int right = place.right - place.left - 1;
    const int bottom = place.bottom - place.top - 1;
    RedrawWindow(bar.Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME | RDW_UPDATENOW);
    const HDC dc = GetWindowDC(bar.Handle());
    for (const POINT edge : {POINT{0, bottom / 2}, {right, bottom / 2}, {right / 2, 0}, {right / 2, bottom}}) {
        EXPECT_EQ(GetPixel(dc, edge.x, edge.y), GetSysColor(COLOR_BTNSHADOW)) << edge.x << ", " << edge.y;
    }
    ReleaseDC(bar.Handle(), dc);
}

TEST_F(CTimedProgressTest, FillsInProportion) {
    CTimedProgressCtrl bar(Anchor(), 100, IDB_PROGRESS_DVD);
    const std::size_t length = Colours(bar).size();
    EXPECT_EQ(EmptyPart(Colours(bar)), length);
    bar.SetPosition(25, true);
    const std::vector<COLORREF> quarter = Colours(bar);
    EXPECT_NEAR(static_cast<double>(EmptyPart(quarter)), static_cast<double>(length) * 0.75, 1.0);
    EXPECT_NE(quarter.front(), GetSysColor(COLOR_WINDOW));
    EXPECT_EQ(quarter.back(), GetSysColor(COLOR_WINDOW));
    bar.SetPosition(100, true);
    EXPECT_EQ(EmptyPart(Colours(bar)), 0U);
}

TEST_F(CTimedProgressTest, FillsFromTheBottomIfTallerThanWide) {
    MoveWindow(Anchor(), 10, 10, 20, 120, FALSE);
    CTimedProgressCtrl bar(Anchor(), 100, IDB_PROGRESS_CD);
    bar.SetPosition(25, true);
    const std::vector<COLORREF> colours = Colours(bar);
    EXPECT_NEAR(static_cast<double>(EmptyPart(colours)), static_cast<double>(colours.size()) * 0.75, 1.0);
    EXPECT_EQ(colours.front(), GetSysColor(COLOR_WINDOW));
    EXPECT_NE(colours.back(), GetSysColor(COLOR_WINDOW));
}

TEST_F(CTimedProgressTest, ShowsItsTextInTextModes) {
    CTimedProgressCtrl plain(Anchor(), 100, IDB_PROGRESS_DVD);
    EXPECT_EQ(EmptyPart(Colours(plain)), Colours(plain).size());
    for (const EProgressText mode : {EProgressText::Percent, EProgressText::Times}) {
        CTimedProgressCtrl bar(Anchor(), 100, IDB_PROGRESS_DVD, mode);
        bar.SetCaptions({"", "MMMMM", ""});
        EXPECT_LT(EmptyPart(Colours(bar)), Colours(bar).size());
    }
}

}  // namespace
}  // namespace vantrel::test
