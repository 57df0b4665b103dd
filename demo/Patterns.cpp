#include "Pictures.h"

SColour FineLines(SPlace at)
{
    // A ball over its shadow, as one engraves it: the darker a place, the broader its lines.
    // Straight down there are 128 of them, five pixels each, as many as the thumbnail has rows.
    const float x = (at.mX - 0.5f * at.mAspect) / 0.36f;
    const float y = (at.mY - 0.46f) / 0.36f;
    const float light = Length(x + 0.38f, y + 0.42f);
    const float shadow = Smooth(1.05f, 0.35f, Length(x - 0.25f, 5 * (y - 1.08f)));
    const float wall = 0.12f + 0.3f * Smooth(0.2f, 1.0f, at.mY) + 0.45f * shadow;
    const float dark = Length(x, y) < 1 ? 0.06f + 0.84f * Smooth(0.1f, 1.5f, light) : wall;
    const float line = std::abs(2 * Fraction(128 * at.mY + 3 * Wave(1.1f * at.mX)) - 1);
    const SColour ink = Mix(Rgb(0x0b4a6e), Rgb(0x8a1f5c), at.mX / at.mAspect);
    return Mix(Rgb(0xfbf5e4), ink, std::clamp(2.5f * (dark - line) + 0.5f, 0.0f, 1.0f));
}

SColour Ripples(SPlace at)
{
    struct SDrop
    {
        float mX;
        float mY;
        float mReach;   // how far its rings have come
        float mHeight;  // of the rings
    };
    constexpr SDrop kDrops[] = {
        {0.52f, 0.42f, 0.62f, 1.0f}, {1.14f, 0.66f, 0.40f, 0.9f}, {1.22f, 0.18f, 0.22f, 0.7f}};

    // How steep the water is that all rings together move.
    float slopeX = 0;
    float slopeY = 0;
    for (const SDrop& drop : kDrops) {
        const float awayX = at.mX - drop.mX;
        const float awayY = 1.5f * (at.mY - drop.mY);  // seen at a slant
        const float away = Length(awayX, awayY) + 0.001f;
        const float fade = Smooth(1.0f, 0.75f, away / drop.mReach) / (1 + 3 * away);
        const float steep = drop.mHeight * fade * Wave(12 * (away - drop.mReach)) / away;
        slopeX += steep * awayX;
        slopeY += steep * awayY;
    }
    // The water mirrors a sky that is light at the top left.
    const float sky = 0.72f - 0.4f * at.mY - 0.12f * at.mX / at.mAspect;
    const float grey = sky - 0.34f * slopeX - 0.5f * slopeY;
    const float gloss = Smooth(0.55f, 0.95f, -0.6f * slopeX - 0.8f * slopeY);
    return SColour{1, 1, 1} * (grey + 0.5f * gloss);
}
