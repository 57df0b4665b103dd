#ifndef TESSEL_DEMO_PICTURES_H
#define TESSEL_DEMO_PICTURES_H

#include "Paint.h"

/// The pictures that draw_pictures draws, each as a function that gives the colour at a place.

// Scenes.cpp
SColour MistyRidges(SPlace at);
SColour Sunset(SPlace at);
SColour Balloons(SPlace at);
SColour SailingBoat(SPlace at);

// Patterns.cpp
SColour FineLines(SPlace at);
SColour Ripples(SPlace at);

#endif
