#ifndef TESSEL_TREE_ALBUMPAGE_H
#define TESSEL_TREE_ALBUMPAGE_H

#include <string>
#include <vector>

/// @file
/// The text of gallery.html: one gallery's pictures on a page for today's browsers, beside the
/// index page. It is made here and written elsewhere. Functions without state, for any thread.

constexpr const char* kAlbumFile = "gallery.html";  ///< in the gallery's folder

/// A picture on the page.
struct SAlbumPicture
{
    std::string mName;       ///< without the folder; any bytes
    long mTime = 0;          ///< last modification, seconds since 1970-01-01 00:00 UTC
    bool mHasThumb = false;  ///< tessel/ has a thumbnail of this name
};

/// Sorts pictures by name (see IsBefore), or by time with the oldest first and by name where times
/// are equal.
void SortPictures(std::vector<SAlbumPicture>& pictures, bool byTime);

/// The page of pictures that are in order. `heading` is the folder's name, `linkBack` the relative
/// path of the page of all galleries, or empty where there is none; both are bytes without escapes.
/// `thumbSize` is the longer side of the thumbnails in pixels.
std::string MakeAlbumPage(const std::string& heading, const std::vector<SAlbumPicture>& pictures,
                          const std::string& linkBack, int thumbSize);

#endif
