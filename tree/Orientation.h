#ifndef TESSEL_TREE_ORIENTATION_H
#define TESSEL_TREE_ORIENTATION_H

class CGraflib;

/// @file
/// Which way up a photograph is. Cameras store the rows as the sensor gives them, and say in the
/// Exif tag "orientation" how the picture is to be turned. Functions without state, for any thread.

constexpr int kUpright = 1;  ///< the orientation of a picture that is shown as it is stored

/// A JPEG file's orientation, 1 to 8. kUpright where the file gives none that browsers follow, and
/// for what can't be read or isn't an ordinary file. Reads little, however large the file is.
int ReadOrientation(const char* path);

/// Turns a picture of this orientation so that it is seen as browsers show the file. Does nothing
/// for kUpright and for numbers that are no orientation.
void TurnUpright(CGraflib& image, int orientation);

#endif
