#ifndef TESSEL_DEMO_PAINT_H
#define TESSEL_DEMO_PAINT_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

/// Colours, blends and noise: what pictures that are drawn by formula are made of. Sums, products,
/// quotients and square roots are all they take. So a picture is the same wherever it is drawn, but
/// on an x87, which calculates with more digits.

/// A colour; every part is 0 to 1 where it is shown, and may be more while light is added up.
struct SColour
{
    float mRed = 0;
    float mGreen = 0;
    float mBlue = 0;
};

/// A place in a picture: `mX` from 0 at the left to `mAspect` (width / height) at the right, `mY`
/// from 0 at the top to 1 at the bottom.
struct SPlace
{
    float mX = 0;
    float mY = 0;
    float mAspect = 1;
};

inline SColour operator+(SColour a, SColour b)
{
    return {a.mRed + b.mRed, a.mGreen + b.mGreen, a.mBlue + b.mBlue};
}

inline SColour operator*(SColour a, float k)
{
    return {a.mRed * k, a.mGreen * k, a.mBlue * k};
}

/// The colour that web pages write as #rrggbb.
constexpr SColour Rgb(unsigned hex)
{
    return {static_cast<float>(hex >> 16 & 255) / 255, static_cast<float>(hex >> 8 & 255) / 255,
            static_cast<float>(hex & 255) / 255};
}

/// The largest integer not above x. Much faster than std::floor without special instructions.
inline int Floor(float x)
{
    const int cut = static_cast<int>(x);
    return cut - (x < static_cast<float>(cut) ? 1 : 0);
}

inline float Fraction(float x)
{
    return x - static_cast<float>(Floor(x));
}

inline float Square(float x)
{
    return x * x;
}

/// The length of the vector (x, y).
inline float Length(float x, float y)
{
    return std::sqrt(x * x + y * y);
}

/// From 0 where x is `from` or before, to 1 where it is `to` or behind, without a corner.
/// `from` may be the larger one.
inline float Smooth(float from, float to, float x)
{
    const float t = std::clamp((x - from) / (to - from), 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

/// A wave between 1, where x is whole, and -1, half way between.
inline float Wave(float x)
{
    return 2 * Smooth(0, 1, std::abs(2 * Fraction(x) - 1)) - 1;
}

inline float Mix(float a, float b, float t)
{
    return a + (b - a) * t;
}

inline SColour Mix(SColour a, SColour b, float t)
{
    return {Mix(a.mRed, b.mRed, t), Mix(a.mGreen, b.mGreen, t), Mix(a.mBlue, b.mBlue, t)};
}

/// The colour at t, 0 to 1, on a scale of colours at equal distances.
template <std::size_t N>
SColour Gradient(const SColour (&scale)[N], float t)
{
    const float at = std::clamp(t, 0.0f, 1.0f) * static_cast<float>(N - 1);
    const std::size_t i = std::min(static_cast<std::size_t>(at), N - 2);
    return Mix(scale[i], scale[i + 1], at - static_cast<float>(i));
}

/// A number from 0 to 1, 1 excepted, that looks random and depends on the arguments alone.
inline float Hash(int x, int y)
{
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x8da6b343u;
    h ^= static_cast<std::uint32_t>(y) * 0xd8163841u + 0x9e3779b9u;
    h = (h ^ h >> 15) * 0x2c1b3c6du;
    h ^= h >> 13;
    return static_cast<float>(h >> 8) * 0x1p-24f;
}

/// Smooth noise from 0 to 1 with features about one unit wide.
inline float Noise(float x, float y)
{
    const int column = Floor(x);
    const int row = Floor(y);
    const float s = Smooth(0, 1, x - static_cast<float>(column));
    const float t = Smooth(0, 1, y - static_cast<float>(row));
    return Mix(Mix(Hash(column, row), Hash(column + 1, row), s),
               Mix(Hash(column, row + 1), Hash(column + 1, row + 1), s), t);
}

/// Noise in layers, each twice as fine and half as strong as the one before: from 0 to 1.
inline float Cloud(float x, float y, int layers)
{
    float sum = 0;
    float weight = 1;
    for (int i = 0; i < layers; ++i) {
        weight /= 2;
        sum += weight * Noise(x, y);
        x = 2.03f * x + 13.7f;
        y = 2.03f * y + 7.1f;
    }
    return sum / (1 - weight);
}

#endif
