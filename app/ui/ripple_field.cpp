// The simulation uses two height fields: a new height is half the sum of the four neighbours minus the height one step
// ago. This is the discrete wave equation at the highest stable speed.
#include "app/ui/ripple_field.h"

#include <algorithm>

namespace vantrel {
namespace {

constexpr std::int32_t kHighest = 32767;       // limits the sums below, whatever the number of drops on a point
constexpr std::int32_t kDamping = 24;          // each step reduces a height by this part of it
constexpr std::int32_t kRefraction = 12;       // slope per pixel of displacement
constexpr std::int32_t kShine = 3;             // slope per step of brightness
constexpr std::int32_t kBrightestSlope = 192;  // steeper slopes are no brighter

std::int32_t Bounded(std::int64_t height) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(height, -kHighest, kHighest));
}

std::int32_t Damped(std::int32_t height) {
    const std::int32_t sign = (height > 0) - (height < 0);
    return height - height / kDamping - sign;
}

std::uint32_t Lit(std::uint32_t pixel, std::int32_t light) {
    std::uint32_t lit = 0;
    for (unsigned shift = 0; shift < 24; shift += 8) {
        const auto channel = static_cast<std::int32_t>(pixel >> shift & 0xFFU);
        lit |= static_cast<std::uint32_t>(std::clamp(channel + light, 0, 255)) << shift;
    }
    return lit;
}

}  // namespace

CRippleField::CRippleField(int width, int height)
    : m_width(std::max(width, 1)),
      m_height(std::max(height, 1)),
      m_heights(static_cast<std::size_t>(m_width + 2) * static_cast<std::size_t>(m_height + 2)),
      m_previous(m_heights.size()) {}

std::size_t CRippleField::IndexOf(int x, int y) const {
    return static_cast<std::size_t>(y + 1) * static_cast<std::size_t>(m_width + 2) + static_cast<std::size_t>(x + 1);
}

void CRippleField::Drop(int x, int y, int radius, int depth) {
    const std::int64_t reach = static_cast<std::int64_t>(radius) * radius;
    const auto first = [radius](int centre) { return std::max<std::int64_t>(std::int64_t{centre} - radius, 0); };
    const auto last = [radius](int centre, int length) {
        return std::min<std::int64_t>(std::int64_t{centre} + radius, length - 1);
    };
    for (std::int64_t row = first(y); row <= last(y, m_height); ++row) {
        for (std::int64_t column = first(x); column <= last(x, m_width); ++column) {
            if ((column - x) * (column - x) + (row - y) * (row - y) > reach) {
                continue;
            }
            std::int32_t& height = m_heights[IndexOf(static_cast<int>(column), static_cast<int>(row))];
            height = Bounded(std::int64_t{height} + depth);
            m_isAtRest = m_isAtRest && height == 0;
        }
    }
}

std::int32_t CRippleField::Next(std::size_t index) const {
    const std::size_t stride = static_cast<std::size_t>(m_width) + 2;
    const std::int32_t around =
        m_heights[index - 1] + m_heights[index + 1] + m_heights[index - stride] + m_heights[index + stride];
    return Damped(Bounded(std::int64_t{around / 2} - m_previous[index]));
}

void CRippleField::Advance() {
    if (m_isAtRest) {
        return;
    }
    bool isMoving = false;
    for (int y = 0; y < m_height; ++y) {
        const std::size_t start = IndexOf(0, y);
        for (std::size_t index = start; index < start + static_cast<std::size_t>(m_width); ++index) {
            m_previous[index] = Next(index);
            isMoving = isMoving || (m_previous[index] | m_heights[index]) != 0;
        }
    }
    m_heights.swap(m_previous);
    m_isAtRest = !isMoving;
}

std::uint64_t CRippleField::Energy() const {
    std::uint64_t energy = 0;
    for (std::size_t index = 0; index < m_heights.size(); ++index) {
        const std::int64_t height = m_heights[index];
        const std::int64_t change = height - m_previous[index];
        energy += static_cast<std::uint64_t>(height * height + change * change);
    }
    return energy;
}

void CRippleField::Render(std::span<const std::uint32_t> picture, std::span<std::uint32_t> view) const {
    const std::size_t count = static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height);
    if (picture.size() < count || view.size() < count) {
        return;
    }
    const std::size_t stride = static_cast<std::size_t>(m_width) + 2;
    std::size_t pixel = 0;
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x, ++pixel) {
            const std::size_t index = IndexOf(x, y);
            const std::int32_t across = m_heights[index + 1] - m_heights[index - 1];
            const std::int32_t along = m_heights[index + stride] - m_heights[index - stride];
            const int column = std::clamp(x + across / kRefraction, 0, m_width - 1);
            const int row = std::clamp(y + along / kRefraction, 0, m_height - 1);
            const auto source =
                static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(column);
            view[pixel] = Lit(picture[source], std::clamp(across, -kBrightestSlope, kBrightestSlope) / kShine);
        }
    }
}

}  // namespace vantrel
