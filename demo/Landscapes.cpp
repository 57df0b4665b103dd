#include "Pictures.h"

namespace {

/// How much of a disc's light reaches a place at `distance` from its centre: all of it inside,
/// none a little outside.
float Disc(float distance, float radius, float edge = 0.003f)
{
    return Smooth(radius + edge, radius, distance);
}

/// The height of fir trees of up to `height` at x, above the ground they stand on.
float FirTrees(float x, float spacing, float height, int seed)
{
    float top = 0;
    const int cell = Floor(x / spacing);
    for (int i = cell - 1; i <= cell + 1; ++i) {
        const float stem = (static_cast<float>(i) + 0.2f + 0.6f * Hash(i, seed)) * spacing;
        const float tall = height * (0.45f + 0.55f * Hash(i, seed + 1));
        const float away = std::abs(x - stem);
        // Branches in steps, each wider than the one above.
        const float step = 0.1f * tall * Fraction(away * 9 / spacing);
        top = std::max(top, tall - away * height / spacing * 1.6f - step);
    }
    return top;
}

}  // namespace

// --- Misty ridges --------------------------------------------------------------------------------

namespace {

constexpr int kRidges = 7;  // the nearest is number 0, and bears firs
constexpr float kFirHeight = 0.07f;
constexpr SColour kDawn[] = {Rgb(0x4f6fa8), Rgb(0x9aa4cf), Rgb(0xf3b9a6), Rgb(0xffd98f)};
constexpr SColour kRidgeColours[] = {Rgb(0x0d1b2e), Rgb(0x1e3a5a), Rgb(0x6b6f9c), Rgb(0xdb9d97)};

SColour DawnSky(SPlace at)
{
    const float sun = Length(at.mX - 0.68f * at.mAspect, at.mY - 0.34f);
    const SColour sky = Gradient(kDawn, at.mY * 2.1f) + Rgb(0xffc070) * (0.035f / (sun + 0.06f));
    return Mix(sky, Rgb(0xfff6d8), Disc(sun, 0.05f));
}

float RidgeFoot(int ridge)
{
    return 1.08f - 0.088f * static_cast<float>(ridge);
}

float RidgeRise(int ridge)
{
    return 0.30f - 0.018f * static_cast<float>(ridge);
}

float RidgeCrest(int ridge, float x)
{
    const auto i = static_cast<float>(ridge);
    const float folds = LineCloud(x * (1.1f + 0.28f * i) + 3 * i, ridge, 5);
    const float crest = RidgeFoot(ridge) - RidgeRise(ridge) * (1 - std::abs(2 * folds - 1));
    return ridge == 0 ? crest - FirTrees(x, 0.022f, kFirHeight, 40) : crest;
}

SColour RidgeColour(int ridge, float y)
{
    const float distance = static_cast<float>(ridge) / (kRidges - 1);
    const SColour rock = Gradient(kRidgeColours, distance);
    const SColour mist = Mix(Rgb(0x8f93b8), Rgb(0xffd3a8), distance);
    const float foot = RidgeFoot(ridge);
    const float depth = Smooth(foot - 0.8f * RidgeRise(ridge), foot + 0.05f, y);
    return Mix(rock, mist, depth * (ridge == 0 ? 0.2f : 0.8f));
}

}  // namespace

SColour MistyRidges(SPlace at)
{
    for (int ridge = 0; ridge < kRidges; ++ridge) {
        const float highest = RidgeFoot(ridge) - RidgeRise(ridge) - (ridge == 0 ? kFirHeight : 0);
        if (at.mY > highest && at.mY > RidgeCrest(ridge, at.mX))
            return RidgeColour(ridge, at.mY);
    }
    return DawnSky(at);
}

// --- Night sky -----------------------------------------------------------------------------------

namespace {

constexpr SColour kNight[] = {Rgb(0x050818), Rgb(0x0c1a45), Rgb(0x26407f), Rgb(0x7a6aa8)};

/// The light of stars that are `spacing` apart and up to `size` large.
float Stars(SPlace at, float spacing, float size, int seed)
{
    const int column = Floor(at.mX / spacing);
    const int row = Floor(at.mY / spacing);
    const float bright = 1.8f * Hash(column + seed, row) - 0.8f;
    if (bright < 0)
        return 0;
    const float radius = size * (0.3f + 0.7f * bright * bright);
    const float room = spacing - 4 * radius;
    const float x =
        static_cast<float>(column) * spacing + 2 * radius + room * Hash(column, row + seed);
    const float y =
        static_cast<float>(row) * spacing + 2 * radius + room * Hash(column + seed, row + seed);
    const float distance = Length(at.mX - x, at.mY - y);
    return (0.35f + 0.65f * bright) * Square(Smooth(2 * radius, 0, distance));
}

SColour MoonFace(float x, float y)
{
    const float seas = Smooth(0.42f, 0.62f, Cloud(3 * x + 5, 3 * y + 2, 4));
    const float round = std::sqrt(std::max(0.0f, 1 - x * x - y * y));
    return Mix(Rgb(0xfff7e0), Rgb(0xbfb6a6), seas) * (0.72f + 0.28f * round);
}

SColour MilkyWay(SPlace at)
{
    const float across = at.mX - 0.95f + 0.75f * at.mY;
    const float band = std::exp(-Square(across / 0.2f));
    const float dust = Cloud(5 * at.mX, 5 * at.mY, 5);
    const float dark = Smooth(0.6f, 0.4f, Cloud(7 * at.mX + 40, 7 * at.mY, 4));
    return Mix(Rgb(0x4a4fa8), Rgb(0xd8b8e8), dust) * (band * dust * (0.35f + 0.5f * dark));
}

SColour NightHeaven(SPlace at)
{
    constexpr float kMoonSize = 0.085f;
    const float x = (at.mX - 0.22f) / kMoonSize;
    const float y = (at.mY - 0.2f) / kMoonSize;
    const float moon = Length(x, y);
    const float stars = Stars(at, 0.018f, 0.0026f, 7) + Stars(at, 0.08f, 0.007f, 31);
    const SColour sky = Gradient(kNight, at.mY * 1.1f) + MilkyWay(at) + Rgb(0xf4f6ff) * stars +
                        Rgb(0x9fb4ff) * (0.22f / (0.6f + moon * moon));
    return Mix(sky, MoonFace(x, y), Disc(moon, 1, 0.02f));
}

}  // namespace

SColour NightSky(SPlace at)
{
    constexpr float kTreeTops = 0.67f;
    const float hill = 0.93f - 0.1f * LineCloud(2 * at.mX, 80, 3);
    if (at.mY > kTreeTops && at.mY > hill - FirTrees(at.mX, 0.035f, 0.15f, 81))
        return Rgb(0x04060e);
    const float range = 0.84f - 0.14f * LineCloud(3.1f * at.mX, 83, 5);
    return at.mY > range ? Mix(Rgb(0x1b2450), Rgb(0x3f4480), (at.mY - range) * 5) : NightHeaven(at);
}

// --- Sunset --------------------------------------------------------------------------------------

namespace {

constexpr float kSeaLine = 0.6f;
constexpr float kSunHeight = 0.09f;  // above the sea line
constexpr SColour kEvening[] = {Rgb(0x241a52), Rgb(0x6b2a6e), Rgb(0xd8484f), Rgb(0xff8f3c),
                                Rgb(0xffd76a)};

SColour EveningSky(SPlace at)
{
    const float sun = Length(at.mX - 0.5f * at.mAspect, at.mY - kSeaLine + kSunHeight);
    const SColour clear =
        Gradient(kEvening, at.mY / kSeaLine) + Rgb(0xff9a40) * (0.03f / (sun + 0.1f));
    const float cloud = Smooth(0.5f, 0.72f, Cloud(1.6f * at.mX + 3, 10 * at.mY, 5));
    const SColour lit = Mix(Rgb(0xff7a4a), Rgb(0x4a2560), Smooth(0.1f, 0.8f, sun));
    return Mix(Mix(clear, lit, 0.8f * cloud), Rgb(0xfff3c0), Disc(sun, 0.085f));
}

}  // namespace

SColour Sunset(SPlace at)
{
    if (at.mY < kSeaLine)
        return EveningSky(at);
    const float depth = at.mY - kSeaLine;
    const float far = 1 / (depth + 0.02f);
    const float across = at.mX - 0.5f * at.mAspect;
    const float wave = Cloud(3.2f * across * far, 9 * far, 3);
    const float mirrored = kSeaLine - (1.3f + 0.25f * wave) * depth;
    const SColour water = Gradient(kEvening, mirrored / kSeaLine) * (0.4f + 0.4f * wave);
    const float path = std::exp(-Square(across / (0.07f + 0.35f * depth)));
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

constexpr SBalloon kBalloons[] = {
    {0.33f, 0.35f, 0.215f, {Rgb(0xe8342a), Rgb(0xffc928), Rgb(0xf47a1f)}},
    {0.655f, 0.60f, 0.095f, {Rgb(0x1f5fbf), Rgb(0xf5f5f5), Rgb(0x37b6c8)}},
    {0.13f, 0.78f, 0.05f, {Rgb(0x7a2f9a), Rgb(0xf06fa8), Rgb(0xffe08a)}},
};

constexpr float kNeck = 1.3f;  // where the envelope ends, in radii below its centre

/// Half the width of the envelope at a height, in radii.
float EnvelopeWidth(float y)
{
    return y < 0 ? std::sqrt(std::max(0.0f, 1 - y * y))
                 : Mix(1, 0.17f, Smooth(-0.35f, 1.5f, y) * 1.2f - 0.12f);
}

bool InBasket(float x, float y)
{
    const bool basket = std::abs(x) < 0.15f && y > 1.5f && y < 1.74f;
    const bool rope = std::abs(std::abs(x) - 0.14f) < 0.012f && y > kNeck && y <= 1.5f;
    return basket || rope;
}

SColour EnvelopeColour(const SBalloon& balloon, float across, float y)
{
    const float longitude = std::asin(across) / kPi + 0.5f;
    const float gore = longitude * 9;
    const int patch = (Floor(gore) + Floor(3 * y + 9)) % 3;
    const float bulge = 0.86f + 0.14f * std::sin(kPi * Fraction(gore));
    const float light = 0.62f + 0.5f * std::sqrt(1 - Square(0.9f * (across * 0.6f + 0.4f)));
    return balloon.mColours[patch] * (bulge * light * (1.05f - 0.2f * Smooth(-1, kNeck, y)));
}

SColour DaySky(SPlace at)
{
    const float cloud = Cloud(2.6f * at.mX + 1, 4.2f * at.mY, 6);
    const float shade = Cloud(2.6f * at.mX + 1.05f, 4.2f * at.mY - 0.2f, 4);
    const SColour white = Mix(Rgb(0xffffff), Rgb(0xb9cbe2), Clamp(0.5f + 2.5f * (shade - cloud)));
    return Mix(Mix(Rgb(0x2f86d6), Rgb(0xbfe3f7), at.mY), white, Smooth(0.45f, 0.68f, cloud));
}

}  // namespace

SColour Balloons(SPlace at)
{
    for (const SBalloon& balloon : kBalloons) {
        const float x = (at.mX - balloon.mX) / balloon.mRadius;
        const float y = (at.mY - balloon.mY) / balloon.mRadius;
        if (std::abs(x) > 1 || y < -1 || y > 2)
            continue;
        const float width = EnvelopeWidth(y);
        if (y < kNeck && std::abs(x) < width)
            return EnvelopeColour(balloon, x / width, y);
        if (InBasket(x, y))
            return Rgb(0x5a371c) * (0.8f + 0.4f * Fraction(y * 16));
    }
    return DaySky(at);
}

// --- Sailing boat --------------------------------------------------------------------------------

namespace {

/// The boat, in units of the picture's height, counted from the foot of its mast; false beside it.
bool BoatColour(float x, float y, SColour* colour)
{
    const bool hull = y > 0 && y < 0.12f && std::abs(x) < 0.3f - 0.9f * y;
    const bool mainSail = y < -0.03f && x > 0.015f && x < 0.26f * (1 + (y + 0.03f) / 0.55f);
    const bool jib = y < -0.06f && x < -0.015f && x > -0.2f * (1 + (y + 0.06f) / 0.42f);
    const bool mast = y <= 0 && y > -0.6f && std::abs(x) <= 0.015f;
    if (hull)
        *colour = y < 0.03f ? Rgb(0xffffff) : Rgb(0xc22a2a);
    else if (mainSail)
        *colour = Rgb(0xfff8e8);
    else if (jib)
        *colour = Rgb(0xffb52e);
    else if (mast)
        *colour = Rgb(0x5a3a20);
    return hull || mainSail || jib || mast;
}

}  // namespace

SColour SailingBoat(SPlace at)
{
    SColour colour;
    if (at.mY > 0.82f + 0.02f * std::sin(22 * at.mX))
        return Rgb(0x0f5fa8);
    if (BoatColour(at.mX - 0.5f * at.mAspect, at.mY - 0.74f, &colour))
        return colour;
    if (at.mY > 0.68f)
        return Rgb(0x2a86cf);
    const float sun = Length(at.mX - 0.25f, at.mY - 0.24f);
    return Mix(Mix(Rgb(0x6fc6f2), Rgb(0xe8f8ff), at.mY / 0.68f), Rgb(0xffe14a), Disc(sun, 0.11f));
}
