#ifndef TESSEL_TREE_GALLERIESPAGE_H
#define TESSEL_TREE_GALLERIESPAGE_H

#include <string>
#include <vector>

/// @file
/// The text of galleries.html: all galleries at and below a folder, each with its first picture and
/// a link to its page. It is made here and written elsewhere. Functions without state, for any
/// thread.

constexpr const char* kGalleriesFile = "galleries.html";  ///< in the folder at the top

/// A gallery on the page.
struct SGalleryEntry
{
    std::string mPath;        ///< relative to the folder at the top, which is itself ""; any bytes
    long mPictures = 0;       ///< a gallery without pictures is left out
    std::string mFirstThumb;  ///< file name of its first thumbnail; empty: it has none
};

/// The page of galleries, which are sorted by path (see IsBefore). `heading` is the name of the
/// folder at the top, without escapes, `thumbSize` the longer side of the thumbnails in pixels.
std::string MakeGalleriesPage(const std::string& heading, std::vector<SGalleryEntry> galleries,
                              int thumbSize);

#endif
