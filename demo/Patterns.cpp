#include <array>

#include "Pictures.h"

// --- Julia set -----------------------------------------------------------------------------------

namespace {

// The scale ends as it begins, as it is run through again and again.
constexpr SColour kJulia[] = {Rgb(0x071040), Rgb(0x1f4fb0), Rgb(0x4fc4e0), Rgb(0xfdf6d0),
                              Rgb(0xf7a81f), Rgb(0xc02a28), Rgb(0x4a0f50), Rgb(0x071040)};

/// How many steps, in fractions, a point takes to leave; `limit` for one that stays.
float EscapeTime(float x, float y, int limit)
{
    constexpr float kFar = 256;
    for (int i = 0; i < limit; ++i) {
        const float size = x * x + y * y;
        if (size > kFar)
            return static_cast<float>(i) - std::log2(std::log2(size) / 8);
        const float next = x * x - y * y - 0.8f;
        y = 2 * x * y + 0.156f;
        x = next;
    }
    return static_cast<float>(limit);
}

}  // namespace

SColour JuliaSet(SPlace at)
{
    const float x = 2.3f * (at.mX - 0.5f * at.mAspect);
    const float y = 2.3f * (at.mY - 0.5f);
    const float time = EscapeTime(0.94f * x - 0.34f * y, 0.34f * x + 0.94f * y, 250);
    return Gradient(kJulia, Fraction(0.62f * std::log2(time + 3) - 1.47f));
}

// --- Spheres -------------------------------------------------------------------------------------

namespace {

struct SVector
{
    float mX = 0;
    float mY = 0;
    float mZ = 0;
};

SVector operator+(SVector a, SVector b)
{
    return {a.mX + b.mX, a.mY + b.mY, a.mZ + b.mZ};
}

SVector operator-(SVector a, SVector b)
{
    return {a.mX - b.mX, a.mY - b.mY, a.mZ - b.mZ};
}

SVector operator*(SVector a, float k)
{
    return {a.mX * k, a.mY * k, a.mZ * k};
}

float Dot(SVector a, SVector b)
{
    return a.mX * b.mX + a.mY * b.mY + a.mZ * b.mZ;
}

SVector Unit(SVector a)
{
    return a * (1 / std::sqrt(Dot(a, a)));
}

struct SSphere
{
    SVector mCentre;
    float mRadius;
    SColour mColour;
    float mMirror;  // the part of the light that it reflects
};

constexpr SSphere kSpheres[] = {
    {{-0.2f, 1.0f, 1.2f}, 1.0f, Rgb(0xe8ecf2), 0.8f},
    {{1.55f, 0.62f, 0.1f}, 0.62f, Rgb(0xd81f2f), 0.25f},
    {{-1.75f, 0.55f, 0.0f}, 0.55f, Rgb(0x1f7fe0), 0.25f},
    {{0.3f, 0.32f, -0.75f}, 0.32f, Rgb(0xf7b51c), 0.2f},
    {{-0.75f, 0.24f, -0.9f}, 0.24f, Rgb(0x22a862), 0.2f},
    {{2.9f, 0.9f, 2.9f}, 0.9f, Rgb(0x8a3fd0), 0.25f},
    {{-3.2f, 0.95f, 2.6f}, 0.95f, Rgb(0xf06f2a), 0.25f},
};

constexpr float kNothing = 1e9f;

struct SHit
{
    float mDistance = kNothing;
    const SSphere* mSphere = nullptr;
};

SHit NearestSphere(SVector from, SVector direction)
{
    SHit hit;
    for (const SSphere& sphere : kSpheres) {
        const SVector way = sphere.mCentre - from;
        const float along = Dot(way, direction);
        const float inside = Square(sphere.mRadius) - Dot(way, way) + along * along;
        if (along <= 0 || inside <= 0)
            continue;
        const float distance = along - std::sqrt(inside);
        if (distance > 0.001f && distance < hit.mDistance)
            hit = {distance, &sphere};
    }
    return hit;
}

SColour SkyLight(SVector direction)
{
    constexpr SColour kSky[] = {Rgb(0xf6e6d0), Rgb(0x9fcbf0), Rgb(0x3f7fd0), Rgb(0x1c4fa0)};
    return Gradient(kSky, direction.mY * 1.4f);
}

/// What a ray meets, and what of its light comes back at once.
struct SSurface
{
    SVector mPoint;
    SVector mNormal;
    SColour mColour;
    float mMirror = 0;  // the part of the light that it reflects
    float mHaze = 0;    // the part that is lost in the distance
};

constexpr SVector kSunWay = {-0.453f, 0.741f, -0.494f};
constexpr SColour kHaze = Rgb(0xf6e6d0);

SSurface FloorAt(SVector point, float distance)
{
    const bool dark = ((Floor(point.mX) + Floor(point.mZ)) & 1) != 0;
    const SColour tile = dark ? Rgb(0x2f3644) : Rgb(0xf6f1e6);
    return {point, {0, 1, 0}, tile, 0.12f, Smooth(5, 24, distance)};
}

SSurface SphereAt(SVector point, const SSphere& sphere)
{
    const SVector normal = (point - sphere.mCentre) * (1 / sphere.mRadius);
    return {point, normal, sphere.mColour, sphere.mMirror, 0};
}

/// The light that a surface throws toward where `mirrored` comes from, mirrors aside.
SColour LitColour(const SSurface& surface, SVector mirrored)
{
    const SVector start = surface.mPoint + surface.mNormal * 0.002f;
    if (NearestSphere(start, kSunWay).mSphere != nullptr)
        return surface.mColour * (0.45f * (1 - surface.mMirror));
    const float light = 0.45f + 0.8f * std::max(0.0f, Dot(surface.mNormal, kSunWay));
    const float gloss = 0.9f * std::pow(std::max(0.0f, Dot(mirrored, kSunWay)), 60.0f);
    return surface.mColour * (light * (1 - surface.mMirror)) + SColour{gloss, gloss, gloss};
}

/// The colour that a ray brings back, followed over a few mirrors.
SColour Trace(SVector from, SVector direction)
{
    constexpr float kLevel = 1e-4f;  // what falls less meets the floor behind the haze
    SColour sum;
    float strength = 1;
    for (int bounce = 0; bounce < 4; ++bounce) {
        const SHit hit = NearestSphere(from, direction);
        const float floor = direction.mY < -kLevel ? -from.mY / direction.mY : kNothing;
        if (std::min(hit.mDistance, floor) == kNothing)
            return sum + SkyLight(direction) * strength;
        const SSurface surface = floor < hit.mDistance
                                     ? FloorAt(from + direction * floor, floor)
                                     : SphereAt(from + direction * hit.mDistance, *hit.mSphere);
        direction = direction - surface.mNormal * (2 * Dot(direction, surface.mNormal));
        from = surface.mPoint + surface.mNormal * 0.002f;
        sum = sum + Mix(LitColour(surface, direction), kHaze, surface.mHaze) * strength;
        strength *= surface.mMirror * (1 - surface.mHaze);
    }
    return sum;
}

}  // namespace

SColour Spheres(SPlace at)
{
    const float x = at.mX - 0.5f * at.mAspect;
    const float y = 0.42f - at.mY;
    return Trace({0, 1.7f, -5.2f}, Unit({x, y - 0.12f, 1.15f}));
}

// --- Tartan --------------------------------------------------------------------------------------

namespace {

struct SStripe
{
    int mThreads;
    SColour mColour;
};

constexpr SColour kRed = Rgb(0xb8142a);
constexpr SColour kGreen = Rgb(0x0f4f38);
constexpr SColour kNavy = Rgb(0x14214f);
constexpr SColour kGold = Rgb(0xf2c230);
constexpr SColour kWhite = Rgb(0xf0ece0);

// From one middle of the pattern to the next; then it runs backwards.
constexpr SStripe kSett[] = {{12, kRed},   {2, kGold},  {10, kNavy}, {2, kRed},
                             {12, kGreen}, {2, kWhite}, {6, kGreen}};

constexpr int SettLength()
{
    int threads = 0;
    for (const SStripe& stripe : kSett)
        threads += stripe.mThreads;
    return threads;
}

SColour ThreadColour(int thread)
{
    const int along = thread % (2 * SettLength());
    int left = std::min(along, 2 * SettLength() - 1 - along);
    for (const SStripe& stripe : kSett) {
        left -= stripe.mThreads;
        if (left < 0)
            return stripe.mColour;
    }
    return kRed;
}

}  // namespace

SColour Tartan(SPlace at)
{
    constexpr float kThreads = 150;
    // The cloth lies in soft folds, a little askew.
    const float fold = 0.03f * std::sin(5 * at.mX + 2 * at.mY);
    const float x = kThreads * (at.mX + 0.12f * at.mY + fold + 1);
    const float y = kThreads * (at.mY - 0.12f * at.mX + 0.5f * fold + 1);
    const int warp = Floor(x);
    const int weft = Floor(y);
    const bool warpOnTop = ((warp + weft) & 3) < 2;
    const float round =
        std::sin(kPi * (warpOnTop ? x - static_cast<float>(warp) : y - static_cast<float>(weft)));
    const SColour thread = ThreadColour(warpOnTop ? warp : weft);
    return thread * ((0.75f + 0.4f * round) * (1 + 0.22f * std::cos(5 * at.mX + 2 * at.mY)));
}

// --- Sunflower -----------------------------------------------------------------------------------

namespace {

constexpr int kSeeds = 520;
constexpr float kSeedSpacing = 0.0092f;
constexpr float kHeart = 0.212f;  // the radius of the seeds' disc

struct SSeed
{
    float mX;
    float mY;
};

/// Every seed stands a golden angle further round than the one before, and a little further out.
std::array<SSeed, kSeeds> StrewSeeds()
{
    constexpr float kGoldenAngle = 2.39996323f;
    std::array<SSeed, kSeeds> seeds{};
    float number = 0.5f;
    for (SSeed& seed : seeds) {
        const float radius = kSeedSpacing * std::sqrt(number);
        seed = {radius * std::cos(number * kGoldenAngle), radius * std::sin(number * kGoldenAngle)};
        number += 1;
    }
    return seeds;
}

SColour HeartColour(float x, float y, float radius)
{
    static const std::array<SSeed, kSeeds> kStrewn = StrewSeeds();
    const float inner = std::max(0.0f, radius / kSeedSpacing - 1.1f);
    const float outer = radius / kSeedSpacing + 1.1f;
    const int last = std::min(kSeeds, static_cast<int>(outer * outer) + 1);
    float nearest = 1;
    for (int i = static_cast<int>(inner * inner); i < last; ++i) {
        const SSeed& seed = kStrewn[static_cast<std::size_t>(i)];
        nearest = std::min(nearest, Square(x - seed.mX) + Square(y - seed.mY));
    }
    constexpr SColour kSeedColours[] = {Rgb(0x8a9a2a), Rgb(0x7a4a14), Rgb(0x3a1c0a), Rgb(0xa8641a)};
    const float dome = Clamp(std::sqrt(nearest) / (0.95f * kSeedSpacing));
    return Gradient(kSeedColours, radius / kHeart) * (1.35f - 1.2f * dome * dome);
}

/// One ring of petals; false between them.
bool PetalColour(float angle, float radius, int petals, float turn, float tip, SColour* colour)
{
    const float around = angle / (2 * kPi) * static_cast<float>(petals) + turn;
    const float side = 2 * (Fraction(around) - 0.5f);
    const float length = tip * (0.92f + 0.08f * Hash(Floor(around) + 50, petals));
    const float out = (radius - 0.17f) / (length - 0.17f);
    const float width = 1.05f * std::sqrt(Clamp(out + 0.3f)) * std::sqrt(Clamp(1 - out * out));
    if (std::abs(side) >= width)
        return false;
    const float vein = 0.9f + 0.1f * std::cos(14 * side);
    const float edge = 1 - 0.35f * Square(side / (width + 0.01f));
    *colour = Mix(Rgb(0xe07a0a), Rgb(0xffd22e), Smooth(0, 0.75f, out)) * (vein * edge);
    return true;
}

SColour Garden(SPlace at)
{
    SColour green =
        Mix(Rgb(0x6fa8d8), Rgb(0x1f5a2a), Smooth(0, 0.8f, at.mY + 0.3f * Noise(2 * at.mX, 3)));
    for (int layer = 0; layer < 2; ++layer) {
        const float spacing = 0.17f + 0.08f * static_cast<float>(layer);
        const int column = Floor(at.mX / spacing);
        const int row = Floor(at.mY / spacing);
        const float x =
            (Fraction(at.mX / spacing) - 0.4f - 0.2f * Hash(column, row + layer)) * spacing;
        const float y =
            (Fraction(at.mY / spacing) - 0.4f - 0.2f * Hash(row, column + layer)) * spacing;
        const float blur = Smooth(0.4f * spacing, 0.32f * spacing, Length(x, y));
        green = Mix(green, Rgb(0xb8d86a), 0.4f * blur * Hash(column + 9, row + layer));
    }
    return green;
}

}  // namespace

SColour Sunflower(SPlace at)
{
    const float x = at.mX - 0.5f * at.mAspect;
    const float y = at.mY - 0.5f;
    const float radius = Length(x, y);
    if (radius < kHeart)
        return HeartColour(x, y, radius);
    SColour petal;
    const float angle = std::atan2(y, x) + kPi;
    if (PetalColour(angle, radius, 20, 0, 0.44f, &petal))
        return petal * (0.75f + 0.25f * Smooth(kHeart, kHeart + 0.04f, radius));
    if (PetalColour(angle, radius, 20, 0.5f, 0.48f, &petal))
        return petal * 0.78f;
    return Garden(at);
}

// --- Ripples -------------------------------------------------------------------------------------

namespace {

struct SDrop
{
    float mX;
    float mY;
    float mReach;   // how far its rings have come
    float mHeight;  // of the rings
};

constexpr SDrop kDrops[] = {
    {0.52f, 0.42f, 0.62f, 1.0f}, {1.14f, 0.66f, 0.40f, 0.9f}, {1.22f, 0.18f, 0.22f, 0.7f}};

struct SSlope
{
    float mX = 0;
    float mY = 0;
};

/// How steep the water is that all rings together move.
SSlope WaterSlope(float x, float y)
{
    SSlope slope;
    for (const SDrop& drop : kDrops) {
        const float awayX = x - drop.mX;
        const float awayY = 1.5f * (y - drop.mY);  // seen at a slant
        const float away = Length(awayX, awayY) + 0.001f;
        const float fade = Smooth(1.0f, 0.75f, away / drop.mReach) / (1 + 3 * away);
        const float steep = drop.mHeight * fade * std::cos(75 * (away - drop.mReach));
        slope.mX += steep * awayX / away;
        slope.mY += steep * awayY / away;
    }
    return slope;
}

}  // namespace

SColour Ripples(SPlace at)
{
    const SSlope slope = WaterSlope(at.mX, at.mY);
    // The water mirrors a sky that is light at the top left.
    const float sky = 0.72f - 0.4f * at.mY - 0.12f * at.mX / at.mAspect;
    const float grey = sky - 0.34f * slope.mX - 0.5f * slope.mY;
    const float gloss = Smooth(0.55f, 0.95f, -0.6f * slope.mX - 0.8f * slope.mY);
    return SColour{1, 1, 1} * (grey + 0.5f * gloss);
}
