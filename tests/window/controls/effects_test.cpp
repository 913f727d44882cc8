// The title effect and the animation of the window.
#include <future>
#include <set>

#include "app/ui/ripple_effect.h"
#include "app/ui/window_animation.h"
#include "resources/resource_ids.h"
#include "tests/window/controls/controls_dialog.h"

namespace vantrel::test {
namespace {

constexpr int kVisibleRows = 81;

std::vector<std::uint32_t> Painted(CRippleEffect& effect) {
    const CMemoryBitmap bitmap(600, 100);
    effect.Paint(bitmap.Dc());
    GdiFlush();
    return {bitmap.Pixels(), bitmap.Pixels() + 600 * 100};
}

/// The picture from the resources, top row first.
std::vector<std::uint32_t> ResourcePicture() {
    const CMemoryBitmap bitmap(kEffectWidth, kEffectHeight);
    const HANDLE picture =
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDB_EFFECT_PICTURE), IMAGE_BITMAP, 0, 0, 0);
    const HDC source = CreateCompatibleDC(nullptr);
    const HGDIOBJ former = SelectObject(source, picture);
    BitBlt(bitmap.Dc(), 0, 0, kEffectWidth, kEffectHeight, source, 0, 0, SRCCOPY);
    SelectObject(source, former);
    DeleteDC(source);
    DeleteObject(picture);
    GdiFlush();
    return {bitmap.Pixels(), bitmap.Pixels() + kEffectWidth * kEffectHeight};
}

TEST(RippleEffect, ShowsTheLowestRowsOfThePictureAtRest) {
    CRippleEffect effect;
    ASSERT_TRUE(effect.SetPicture(IDB_EFFECT_PICTURE, kEffectWidth, kEffectHeight));
    const auto painted = Painted(effect);
    const auto picture = ResourcePicture();
    for (std::size_t y = 0; y < kVisibleRows; ++y) {
        for (std::size_t x = 0; x < kEffectWidth; ++x) {
            const std::uint32_t expected = picture[(kEffectHeight - kVisibleRows + y) * kEffectWidth + x];
            ASSERT_EQ(painted[y * 600 + x + 5] & 0xFFFFFF, expected & 0xFFFFFF) << x << ", " << y;
        }
    }
    EXPECT_EQ(painted[0], 0U) << "painted left of the picture";
    EXPECT_EQ(painted[kVisibleRows * 600 + 5], 0U) << "painted below the picture";
}

TEST(RippleEffect, DropFallsUnderThePointer) {
    CRippleEffect effect;
    ASSERT_TRUE(effect.SetPicture(IDB_EFFECT_PICTURE, kEffectWidth, kEffectHeight));
    const auto still = Painted(effect);
    ASSERT_TRUE(effect.DropAt({300, 40}, kClickDrop));
    const auto stirred = Painted(effect);
    int changed = 0;
    for (int y = 0; y < kVisibleRows; ++y) {
        for (int x = 0; x < 600; ++x) {
            if (const auto index = static_cast<std::size_t>(y * 600 + x); stirred[index] != still[index]) {
                ++changed;
                EXPECT_LE(std::abs(x - 300), kClickDrop.radius + 1);
                EXPECT_LE(std::abs(y - 40), kClickDrop.radius + 1);
            }
        }
    }
    EXPECT_GT(changed, 20);
    for (int step = 0; step < 400; ++step) {
        effect.Advance();
    }
    EXPECT_TRUE(effect.IsAtRest());
    EXPECT_EQ(Painted(effect), still);
}

TEST(RippleEffect, PointerOutsideHasNoEffect) {
    CRippleEffect effect;
    ASSERT_TRUE(effect.SetPicture(IDB_EFFECT_PICTURE, kEffectWidth, kEffectHeight));
    EXPECT_FALSE(effect.DropAt({4, 40}, kMoveDrop));
    EXPECT_FALSE(effect.DropAt({580, 40}, kMoveDrop));
    EXPECT_FALSE(effect.DropAt({100, 81}, kMoveDrop));
    EXPECT_TRUE(effect.IsAtRest());
    EXPECT_TRUE(effect.DropAt({5, 80}, kMoveDrop));
    EXPECT_TRUE(effect.DropAt({579, 0}, kMoveDrop));
}

TEST(RippleEffect, HasItsConstants) {
    EXPECT_EQ(kMoveDrop.radius, 5);
    EXPECT_EQ(kMoveDrop.depth, 50);
    EXPECT_EQ(kClickDrop.radius, 10);
    EXPECT_EQ(kClickDrop.depth, 200);
    EXPECT_EQ(kEffectTimer, 1971U);
    EXPECT_EQ(kEffectPeriod, 30U);
    EXPECT_EQ(kEffectWidth, 575);
    EXPECT_EQ(kEffectHeight, 330);
}

TEST(RippleEffect, IsStretchedOnADisplayOfHighResolution) {
    CRippleEffect effect;
    ASSERT_TRUE(effect.SetPicture(IDB_EFFECT_PICTURE, kEffectWidth, kEffectHeight));
    effect.SetResolution(144);
    constexpr int kWidth = 900;
    const CMemoryBitmap bitmap(kWidth, 150);
    effect.Paint(bitmap.Dc());
    GdiFlush();
    const auto isPainted = [&](int x, int y) { return bitmap.Pixels()[y * kWidth + x] != 0; };
    EXPECT_TRUE(isPainted(865, 60)) << "the right end of the dialog at 150 %";
    EXPECT_TRUE(isPainted(400, 120));
    EXPECT_FALSE(isPainted(6, 60));
    EXPECT_FALSE(isPainted(400, 123));
    EXPECT_TRUE(effect.DropAt({868, 120}, kMoveDrop));
    EXPECT_FALSE(effect.DropAt({871, 60}, kMoveDrop));
    EXPECT_FALSE(effect.DropAt({400, 123}, kMoveDrop));
}

TEST(RippleEffect, MissingPictureIsHarmless) {
    CRippleEffect effect;
    EXPECT_FALSE(effect.SetPicture(9999, kEffectWidth, kEffectHeight));
    EXPECT_FALSE(effect.DropAt({100, 40}, kMoveDrop));
    effect.Advance();
    const auto painted = Painted(effect);
    EXPECT_EQ(std::count(painted.begin(), painted.end(), 0U), 600 * 100);
}

/// The row of the screen through the middle of a rectangle. Both sides of every frame in the rectangle cross it.
class CMiddleRow {
public:
    explicit CMiddleRow(const RECT& rectangle) : m_rectangle(rectangle), m_before(Pixels()) {}

    /// The position of the left side of a frame; -1 if none is drawn. A frame inverts a few pixels and changes no
    /// others.
    int LeftSideOfFrame() const {
        const std::vector<std::uint32_t> now = Pixels();
        int left = -1;
        int inverted = 0;
        for (std::size_t x = 0; x < now.size(); ++x) {
            if (now[x] == (m_before[x] ^ 0xFFFFFF)) {
                left = left < 0 ? static_cast<int>(x) : left;
                ++inverted;
            } else if (now[x] != m_before[x]) {
                return -1;
            }
        }
        return inverted <= kBothSides ? left : -1;
    }

private:
    static constexpr int kBothSides = 6;

    std::vector<std::uint32_t> Pixels() const {
        const int width = m_rectangle.right - m_rectangle.left;
        const CMemoryBitmap bitmap(width, 1);
        const HDC screen = GetDC(nullptr);
        BitBlt(bitmap.Dc(), 0, 0, width, 1, screen, m_rectangle.left, (m_rectangle.top + m_rectangle.bottom) / 2,
               SRCCOPY);
        ReleaseDC(nullptr, screen);
        GdiFlush();
        std::vector<std::uint32_t> pixels(bitmap.Pixels(), bitmap.Pixels() + width);
        for (std::uint32_t& pixel : pixels) {
            pixel &= 0xFFFFFF;
        }
        return pixels;
    }

    RECT m_rectangle;
    std::vector<std::uint32_t> m_before;
};

/// The system's setting for animations, restored by the destructor.
class CAnimationSwitch {
public:
    CAnimationSwitch() {
        SystemParametersInfoW(SPI_GETCLIENTAREAANIMATION, 0, &m_contents, 0);
        m_windows.cbSize = sizeof m_windows;
        SystemParametersInfoW(SPI_GETANIMATION, sizeof m_windows, &m_windows, 0);
    }
    ~CAnimationSwitch() {
        SetContents(m_contents);
        SystemParametersInfoW(SPI_SETANIMATION, sizeof m_windows, &m_windows, 0);
    }
    CAnimationSwitch(const CAnimationSwitch&) = delete;
    CAnimationSwitch& operator=(const CAnimationSwitch&) = delete;

    static void SetContents(BOOL isOn) {
        // The value is passed in place of the pointer.
        SystemParametersInfoW(SPI_SETCLIENTAREAANIMATION, 0, reinterpret_cast<void*>(static_cast<INT_PTR>(isOn)), 0);
    }
    static void SetWindows(int isOn) {
        ANIMATIONINFO windows = {};
        windows.cbSize = sizeof windows;
        windows.iMinAnimate = isOn;
        SystemParametersInfoW(SPI_SETANIMATION, sizeof windows, &windows, 0);
    }

private:
    BOOL m_contents = TRUE;
    ANIMATIONINFO m_windows = {};
};

class CWindowAnimationTest : public CControlsDialog {
protected:
    static std::vector<std::uint32_t> Screen() {
        const CMemoryBitmap bitmap(450, 350);
        const HDC screen = GetDC(nullptr);
        BitBlt(bitmap.Dc(), 0, 0, 450, 350, screen, 180, 180, SRCCOPY);
        ReleaseDC(nullptr, screen);
        GdiFlush();
        return {bitmap.Pixels(), bitmap.Pixels() + 450 * 350};
    }

    CAnimationSwitch m_switch;
    CWindowAnimation m_animation;
};

TEST_F(CWindowAnimationTest, ZoomsFromTheCentreToTheWindow) {
    m_animation.SetStyle(kAnimateZoom);
    const RECT whole = {100, 50, 500, 350};
    const auto frames = m_animation.Frames(whole);
    ASSERT_GE(frames.size(), 4U);
    EXPECT_NE(EqualRect(&frames.back(), &whole), FALSE);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i].left + frames[i].right, whole.left + whole.right);
        EXPECT_EQ(frames[i].top + frames[i].bottom, whole.top + whole.bottom);
        EXPECT_TRUE(i == 0 || (frames[i - 1].left > frames[i].left && frames[i - 1].top > frames[i].top));
    }
}

TEST_F(CWindowAnimationTest, StylesChooseTheDirections) {
    const RECT whole = {100, 50, 500, 350};
    m_animation.SetStyle(kAnimateWidth);
    EXPECT_EQ(m_animation.Frames(whole).front().top, whole.top);
    EXPECT_GT(m_animation.Frames(whole).front().left, whole.left);
    m_animation.SetStyle(kAnimateHeight);
    EXPECT_EQ(m_animation.Frames(whole).front().left, whole.left);
    EXPECT_GT(m_animation.Frames(whole).front().top, whole.top);
    m_animation.SetStyle(kAnimateNothing);
    EXPECT_TRUE(m_animation.Frames(whole).empty());
    m_animation.SetStyle(kAnimateZoom);
    EXPECT_TRUE(m_animation.Frames({10, 10, 10, 10}).empty());
}

TEST_F(CWindowAnimationTest, ShowsFramesAtSeveralPositions) {
    const RECT rectangle = {200, 200, 600, 500};
    // A busy machine may miss all frames of a run.
    EXPECT_TRUE(WaitUntil([&] {
        Pump();
        const CMiddleRow row(rectangle);
        auto playing = std::async(std::launch::async, [&] { CWindowAnimation::Play(m_animation.Frames(rectangle)); });
        std::set<int> places;
        while (playing.wait_for(Milliseconds(0)) != std::future_status::ready) {
            places.insert(row.LeftSideOfFrame());
        }
        places.erase(-1);
        return places.size() >= 2;
    }));
}

TEST_F(CWindowAnimationTest, RestoresTheScreen) {
    // Other windows may appear meanwhile, but not every time.
    EXPECT_TRUE(WaitUntil([&] {
        Pump();
        const auto before = Screen();
        CWindowAnimation::Play(m_animation.Frames({200, 200, 600, 500}));
        return Screen() == before;
    }));
}

TEST_F(CWindowAnimationTest, FollowsBothSettingsOfTheSystem) {
    CAnimationSwitch::SetContents(TRUE);
    CAnimationSwitch::SetWindows(0);
    EXPECT_FALSE(AreAnimationsOn());
    CAnimationSwitch::SetWindows(1);
    CAnimationSwitch::SetContents(FALSE);
    EXPECT_FALSE(AreAnimationsOn());
}

}  // namespace
}  // namespace vantrel::test
