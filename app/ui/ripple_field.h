// Simulated water over a picture: a damped height field that is disturbed by drops and comes to rest again. Portable;
// the window shows it through CRippleEffect.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vantrel {

/// Heights on a grid of width x height points, with the same order of rows as the picture.
class CRippleField {
public:
    /// Creates a field at rest. Both lengths are at least 1.
    CRippleField(int width, int height);

    int Width() const { return m_width; }
    int Height() const { return m_height; }

    /// Raises all points within `radius` of (x, y) by `depth`.
    void Drop(int x, int y, int radius, int depth);

    /// Advances the field by one step. Each step damps every height by at least one unit, so the field comes to rest.
    void Advance();

    bool IsAtRest() const { return m_isAtRest; }

    /// The sum of the squares of all heights and of their changes. It varies within a wave but decreases over time; it
    /// is 0 at rest.
    std::uint64_t Energy() const;

    /// Renders `picture` as seen through the water: refraction displaces pixels by the slope, and light from one side
    /// changes their brightness. Both hold Width() x Height() pixels 0x00RRGGBB; does nothing if one is smaller.
    void Render(std::span<const std::uint32_t> picture, std::span<std::uint32_t> view) const;

private:
    std::size_t IndexOf(int x, int y) const;
    std::int32_t Next(std::size_t index) const;

    int m_width;
    int m_height;
    bool m_isAtRest = true;
    std::vector<std::int32_t> m_heights;   // with a border of one point, which stays at rest
    std::vector<std::int32_t> m_previous;  // the heights one step ago
};

}  // namespace vantrel
