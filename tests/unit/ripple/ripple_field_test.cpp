// The water of the title effect: bounds, decay, and the effect of a drop on the picture.
#include "app/ui/ripple_field.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

namespace vantrel {
namespace {

std::vector<std::uint32_t> Chequered(int width, int height) {
    std::vector<std::uint32_t> picture;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            picture.push_back((x / 3 + y / 3) % 2 == 0 ? 0x00204060 : 0x00C0A080);
        }
    }
    return picture;
}

TEST(RippleField, ShowsThePictureUnchangedAtRest) {
    const CRippleField field(40, 30);
    const std::vector<std::uint32_t> picture = Chequered(40, 30);
    std::vector<std::uint32_t> view(picture.size());
    field.Render(picture, view);
    EXPECT_EQ(view, picture);
    EXPECT_TRUE(field.IsAtRest());
    EXPECT_EQ(field.Energy(), 0U);
}

TEST(RippleField, RendersNothingIntoOrFromAPictureThatIsTooSmall) {
    const CRippleField field(40, 30);
    for (const auto& [pictureSize, viewSize] : {std::pair(1199U, 1200U), std::pair(1200U, 1199U)}) {
        const std::vector<std::uint32_t> picture(pictureSize, 1);
        std::vector<std::uint32_t> view(viewSize);
        field.Render(picture, view);
        EXPECT_EQ(view, std::vector<std::uint32_t>(viewSize));
    }
}

TEST(RippleField, DropChangesPixelsNearItOnly) {
    CRippleField field(80, 60);
    const std::vector<std::uint32_t> picture = Chequered(80, 60);
    std::vector<std::uint32_t> view(picture.size());
    field.Drop(20, 30, 5, 50);
    field.Render(picture, view);
    EXPECT_FALSE(field.IsAtRest());
    EXPECT_NE(view, picture);
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 80; ++x) {
            if (std::max(std::abs(x - 20), std::abs(y - 30)) > 6) {
                const auto index = static_cast<std::size_t>(y) * 80 + static_cast<std::size_t>(x);
                ASSERT_EQ(view[index], picture[index]) << x << ", " << y;
            }
        }
    }
}

/// A raised point gives its neighbours a slope: the left one and the upper one look to it, the others away from it.
TEST(RippleField, SlopesDisplacePixelsAndChangeTheirBrightness) {
    constexpr int kWidth = 9;
    constexpr int kHeight = 8;
    std::vector<std::uint32_t> picture(kWidth * kHeight);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        picture[i] = 0x00FA4000 + static_cast<std::uint32_t>(i);
    }
    const auto at = [&picture](std::size_t x, std::size_t y) { return picture[y * kWidth + x]; };
    struct SSlope {
        int depth;
        std::size_t left, right, upper, lower;  // places of the pixels that are seen beside the point
    };
    // One pixel for each 12 units of slope, one step of brightness for each 3, at most 64.
    for (const SSlope& slope : {SSlope{11, 3, 5, 3, 5}, SSlope{24, 5, 3, 5, 3}, SSlope{300, 8, 0, 7, 0}}) {
        CRippleField field(kWidth, kHeight);
        field.Drop(4, 4, 0, slope.depth);
        std::vector<std::uint32_t> view(picture.size());
        field.Render(picture, view);
        const auto seen = [&view](std::size_t x, std::size_t y) { return view[y * kWidth + x]; };
        const auto lit = [](std::uint32_t pixel, int light) {
            const auto channel = [&](unsigned shift) {
                const int value = static_cast<int>(pixel >> shift & 0xFFU) + light;
                return static_cast<std::uint32_t>(std::clamp(value, 0, 255)) << shift;
            };
            return channel(0) | channel(8) | channel(16);
        };
        const int light = std::min(slope.depth, 192) / 3;
        EXPECT_EQ(seen(3, 4), lit(at(slope.left, 4), light)) << slope.depth;
        EXPECT_EQ(seen(5, 4), lit(at(slope.right, 4), -light)) << slope.depth;
        EXPECT_EQ(seen(4, 3), at(4, slope.upper)) << slope.depth;
        EXPECT_EQ(seen(4, 5), at(4, slope.lower)) << slope.depth;
        std::size_t changed = 0;
        for (std::size_t i = 0; i < picture.size(); ++i) {
            changed += view[i] == picture[i] ? 0U : 1U;
        }
        EXPECT_EQ(changed, slope.depth < 12 ? 2U : 4U) << slope.depth;
    }
}

TEST(RippleField, WavesTravelFromTheDrop) {
    CRippleField field(80, 60);
    const std::vector<std::uint32_t> picture(80 * 60, 0x00808080);
    std::vector<std::uint32_t> view(picture.size());
    field.Drop(40, 30, 5, 200);
    const std::size_t far = 30 * 80 + 62;
    field.Render(picture, view);
    ASSERT_EQ(view[far], picture[far]);
    bool isReached = false;
    for (int step = 0; step < 40 && !isReached; ++step) {
        field.Advance();
        field.Render(picture, view);
        isReached = view[far] != picture[far];
    }
    EXPECT_TRUE(isReached);
}

TEST(RippleField, SpreadsEvenlyToAllSides) {
    CRippleField field(61, 61);
    field.Drop(30, 30, 10, 200);
    const std::vector<std::uint32_t> picture(61 * 61, 0x00808080);
    std::vector<std::uint32_t> view(picture.size());
    for (int step = 0; step < 12; ++step) {
        field.Advance();
    }
    field.Render(picture, view);
    for (std::size_t y = 0; y < 61; ++y) {
        for (std::size_t x = 0; x < 61; ++x) {
            ASSERT_EQ(view[y * 61 + x], view[(60 - y) * 61 + x]) << "mirrored upside down at " << x << ", " << y;
        }
    }
}

TEST(RippleField, EnergyDecaysToRest) {
    CRippleField field(115, 66);
    field.Drop(30, 20, 10, 200);
    field.Drop(90, 50, 5, 50);
    std::vector<std::uint64_t> energies;
    int steps = 0;
    for (; steps < 400 && !field.IsAtRest(); ++steps) {
        if (steps % 40 == 20) {
            energies.push_back(field.Energy());
        }
        field.Advance();
    }
    ASSERT_GE(energies.size(), 3U);
    EXPECT_TRUE(std::is_sorted(energies.rbegin(), energies.rend()));
    EXPECT_LT(energies.back(), energies.front() / 100);
    EXPECT_TRUE(field.IsAtRest()) << "after " << steps << " steps";
    EXPECT_EQ(field.Energy(), 0U);
    const std::vector<std::uint32_t> picture = Chequered(115, 66);
    std::vector<std::uint32_t> view(picture.size());
    field.Render(picture, view);
    EXPECT_EQ(view, picture);
}

TEST(RippleField, DropsAnywhereStayInBounds) {
    CRippleField field(575, 330);
    for (const int x : {INT_MIN, -100, -1, 0, 574, 575, 900, INT_MAX}) {
        for (const int y : {INT_MIN, -5, 0, 329, 330, INT_MAX}) {
            field.Drop(x, y, 10, 200);
        }
    }
    field.Drop(10, 10, -1, 50);
    const std::vector<std::uint32_t> picture = Chequered(575, 330);
    std::vector<std::uint32_t> view(picture.size());
    field.Advance();
    field.Render(picture, view);
    EXPECT_FALSE(field.IsAtRest());
}

TEST(RippleField, DropsOutsideLeaveTheFieldAtRest) {
    CRippleField field(20, 20);
    field.Drop(-50, 10, 10, 200);
    field.Drop(10, 500, 10, 200);
    EXPECT_TRUE(field.IsAtRest());
}

TEST(RippleField, ManyDropsOnOneSpotDoNotOverflow) {
    CRippleField field(50, 50);
    for (int step = 0; step < 5000; ++step) {
        field.Drop(25, 25, 60, step % 7 == 0 ? INT_MIN : INT_MAX);
        field.Advance();
    }
    const std::vector<std::uint32_t> picture = Chequered(50, 50);
    std::vector<std::uint32_t> view(picture.size());
    field.Render(picture, view);
    for (int step = 0; step < 20000 && !field.IsAtRest(); ++step) {
        field.Advance();
    }
    EXPECT_TRUE(field.IsAtRest());
}

TEST(RippleField, SmallestFieldWorks) {
    CRippleField field(1, 1);
    field.Drop(0, 0, 10, 200);
    std::vector<std::uint32_t> view(1);
    field.Render(std::vector<std::uint32_t>{0x00123456}, view);
    EXPECT_EQ(view[0], 0x00123456U);
    for (int step = 0; step < 2000; ++step) {
        field.Advance();
    }
    EXPECT_TRUE(field.IsAtRest());
}

}  // namespace
}  // namespace vantrel
