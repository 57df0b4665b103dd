#ifndef TESSEL_EXAMPLES_PICTURES_H
#define TESSEL_EXAMPLES_PICTURES_H

#include "Paint.h"

/// The pictures that draw_pictures draws, each as a function that gives the colour at a place.

// Landscapes.cpp
SColour MistyRidges(SPlace at);
SColour Dunes(SPlace at);
SColour NightSky(SPlace at);
SColour Aurora(SPlace at);
SColour Sunset(SPlace at);
SColour Balloons(SPlace at);
SColour AutumnTree(SPlace at);
SColour SailingBoat(SPlace at);

// Patterns.cpp
SColour JuliaSet(SPlace at);
SColour ChurchWindow(SPlace at);
SColour Spheres(SPlace at);
SColour IslandMap(SPlace at);
SColour Tartan(SPlace at);
SColour Sunflower(SPlace at);
SColour Ripples(SPlace at);

#endif
