#ifndef TESSEL_APP_GALLERYLAYOUT_H
#define TESSEL_APP_GALLERYLAYOUT_H

/// What a gallery consists of: the names in the folder and the shape of the page.

constexpr const char* kPicturePattern = "*.jpg";
constexpr const char* kPageFile = "index.html";
constexpr const char* kThumbFolder = "tessel";        ///< also holds the database
constexpr const char* kDbaseFile = "tesselbase.txt";  ///< in the thumbnail folder
constexpr int kDefaultThumbSize = 192;                ///< pixels, the longer side
constexpr int kCellsPerRow = 5;

#endif
