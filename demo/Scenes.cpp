#include "Pictures.h"

namespace {

/// The height of firs of up to `height` at x, above the ground they stand on.
float FirTrees(float x, float spacing, float height)
{
    float top = 0;
    const int cell = Floor(x / spacing);
    for (int i = cell - 1; i <= cell + 1; ++i) {
        const float stem = (static_cast<float>(i) + 0.2f + 0.6f * Hash(i, 40)) * spacing;
        const float tall = height * (0.45f + 0.55f * Hash(i, 41));
        const float away = std::abs(x - stem) / spacing;
        // Branches in steps, each wider than the one above.
        top = std::max(top, tall - 1.6f * height * away - 0.1f * tall * Fraction(9 * away));
    }
    return top;
}

/// A sky that shines around a sun of a size.
SColour SunnySky(SColour clear, SColour shine, float distance, float size)
{
    const SColour sky = clear + shine * (0.03f / (distance + 0.08f));
    return Mix(sky, Rgb(0xfff4d0), Smooth(size + 0.003f, size, distance));
}

}  // namespace

SColour MistyRidges(SPlace at)
{
    constexpr int kRidges = 7;  // the nearest is number 0, and bears firs
    constexpr float kFirHeight = 0.07f;
    constexpr SColour kRocks[] = {Rgb(0x0d1b2e), Rgb(0x1e3a5a), Rgb(0x6b6f9c), Rgb(0xdb9d97)};
    constexpr SColour kDawn[] = {Rgb(0x4f6fa8), Rgb(0x9aa4cf), Rgb(0xf3b9a6), Rgb(0xffd98f)};
    for (int ridge = 0; ridge < kRidges; ++ridge) {
        const auto i = static_cast<float>(ridge);
        const float foot = 1.08f - 0.088f * i;
        const float rise = 0.30f - 0.018f * i;
        if (at.mY < foot - rise - kFirHeight)
            continue;  // above its highest peak
        const float folds = Cloud(at.mX * (1.1f + 0.28f * i) + 3 * i, 17 * i, 5);
        const float firs = ridge == 0 ? FirTrees(at.mX, 0.022f, kFirHeight) : 0;
        if (at.mY < foot - rise * (1 - std::abs(2 * folds - 1)) - firs)
            continue;
        const float distance = i / (kRidges - 1);
        const float depth = Smooth(foot - 0.8f * rise, foot + 0.05f, at.mY);
        const SColour mist = Mix(Rgb(0x8f93b8), Rgb(0xffd3a8), distance);
        return Mix(Gradient(kRocks, distance), mist, depth * (ridge == 0 ? 0.2f : 0.8f));
    }
    const float sun = Length(at.mX - 0.68f * at.mAspect, at.mY - 0.34f);
    return SunnySky(Gradient(kDawn, at.mY * 2.1f), Rgb(0xffc070), sun, 0.05f);
}

SColour Sunset(SPlace at)
{
    constexpr float kSeaLine = 0.6f;
    constexpr SColour kEvening[] = {Rgb(0x241a52), Rgb(0x6b2a6e), Rgb(0xd8484f), Rgb(0xff8f3c),
                                    Rgb(0xffd76a)};
    const float across = at.mX - 0.5f * at.mAspect;
    if (at.mY < kSeaLine) {
        const float sun = Length(across, at.mY - 0.51f);
        const float cloud = Smooth(0.5f, 0.72f, Cloud(1.6f * at.mX + 3, 10 * at.mY, 5));
        const SColour lit = Mix(Rgb(0xff7a4a), Rgb(0x4a2560), Smooth(0.1f, 0.8f, sun));
        const SColour sky = Mix(Gradient(kEvening, at.mY / kSeaLine), lit, 0.8f * cloud);
        return SunnySky(sky, Rgb(0xff9a40), sun, 0.085f);
    }
    const float depth = at.mY - kSeaLine;
    const float far = 1 / (depth + 0.02f);
    const float wave = Cloud(3.2f * across * far, 9 * far, 3);
    const float mirrored = kSeaLine - (1.3f + 0.25f * wave) * depth;
    const SColour water = Gradient(kEvening, mirrored / kSeaLine) * (0.4f + 0.4f * wave);
    const float path = Smooth(0.13f + 0.65f * depth, 0, std::abs(across));
    const float glitter = path * Smooth(0.62f - 0.22f * path, 0.72f - 0.2f * path, wave);
    return Mix(water, Rgb(0xffe08a), glitter);
}

// --- Balloons ------------------------------------------------------------------------------------

namespace {

struct SBalloon
{
    float mX;
    float mY;
    float mRadius;
    SColour mColours[3];
};

/// The balloon in units of its radius, counted from its centre; false beside it.
bool BalloonColour(const SBalloon& balloon, float x, float y, SColour* colour)
{
    const float width =
        y < 0 ? std::sqrt(std::max(0.0f, 1 - y * y)) : 1.12f - 0.996f * Smooth(-0.35f, 1.5f, y);
    const float across = std::clamp(x / width, -1.0f, 1.0f);
    const bool envelope = y < 1.3f && std::abs(across) < 1;
    const bool rope = y > 1.2f && y < 1.5f && std::abs(std::abs(x) - 0.14f) < 0.012f;
    const bool basket = y > 1.5f && y < 1.74f && std::abs(x) < 0.15f;
    // Its strips look narrower towards the sides, and are in shadow at the right.
    const float strip = 4.5f + across * (3 + 1.5f * across * across);
    const int patch = (Floor(strip) + Floor(3 * y + 9)) % 3;
    const float light =
        (0.94f - 0.1f * Wave(strip)) * (1.1f - 0.5f * Square(0.55f * across + 0.4f));
    *colour = envelope ? balloon.mColours[patch] * (light * (1 - 0.12f * y)) : Rgb(0x5a371c);
    return envelope || rope || basket;
}

}  // namespace

SColour Balloons(SPlace at)
{
    constexpr SBalloon kBalloons[] = {
        {0.33f, 0.35f, 0.215f, {Rgb(0xe8342a), Rgb(0xffc928), Rgb(0xf47a1f)}},
        {0.655f, 0.60f, 0.095f, {Rgb(0x1f5fbf), Rgb(0xf5f5f5), Rgb(0x37b6c8)}},
        {0.13f, 0.78f, 0.05f, {Rgb(0x7a2f9a), Rgb(0xf06fa8), Rgb(0xffe08a)}},
    };
    for (const SBalloon& balloon : kBalloons) {
        SColour colour;
        const float x = (at.mX - balloon.mX) / balloon.mRadius;
        const float y = (at.mY - balloon.mY) / balloon.mRadius;
        if (BalloonColour(balloon, x, y, &colour))
            return colour;
    }
    const float cloud = Cloud(2.6f * at.mX + 1, 4.2f * at.mY, 6);
    const float shade = Cloud(2.6f * at.mX + 1.05f, 4.2f * at.mY - 0.2f, 4);
    const SColour white = Mix(Rgb(0xb9cbe2), Rgb(0xffffff), Smooth(-0.3f, 0.3f, cloud - shade));
    return Mix(Mix(Rgb(0x2f86d6), Rgb(0xbfe3f7), at.mY), white, Smooth(0.45f, 0.68f, cloud));
}

SColour SailingBoat(SPlace at)
{
    // Counted from the foot of the mast.
    const float x = at.mX - 0.5f * at.mAspect;
    const float y = at.mY - 0.74f;
    if (at.mY > 0.82f + 0.02f * Wave(3.5f * at.mX))
        return Rgb(0x0f5fa8);
    if (y > 0 && y < 0.12f && std::abs(x) < 0.3f - 0.9f * y)
        return y < 0.03f ? Rgb(0xffffff) : Rgb(0xc22a2a);
    if (y < 0 && y > -0.6f && std::abs(x) <= 0.015f)
        return Rgb(0x5a3a20);
    if (y < -0.03f && x > 0 && x < 0.26f + (y + 0.03f) * 0.47f)
        return Rgb(0xfff8e8);
    if (y < -0.06f && x < 0 && x > -0.2f - (y + 0.06f) * 0.48f)
        return Rgb(0xffb52e);
    if (at.mY > 0.68f)
        return Rgb(0x2a86cf);
    const SColour sky = Mix(Rgb(0x6fc6f2), Rgb(0xe8f8ff), at.mY / 0.68f);
    return Mix(sky, Rgb(0xffe14a), Smooth(0.113f, 0.11f, Length(at.mX - 0.25f, at.mY - 0.24f)));
}
