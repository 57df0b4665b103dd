#ifndef TESSEL_APP_GALLERYLAYOUT_H
#define TESSEL_APP_GALLERYLAYOUT_H

#include <string>
#include <string_view>

#include "util/CFileIO.h"

/// @file
/// What a gallery consists of: the names in the folder and the shape of the page.

constexpr const char* kPicturePattern = "*.jpg";
constexpr const char* kPageFile = "index.html";
constexpr const char* kThumbFolder = "tessel";        ///< also holds the database
constexpr const char* kDbaseFile = "tesselbase.txt";  ///< in the thumbnail folder
constexpr int kDefaultThumbSize = 192;                ///< pixels, the longer side
constexpr int kCellsPerRow = 5;

/// True for a file name that the pattern takes, in any letter case.
inline bool IsPictureName(std::string_view name)
{
    const std::string_view suffix = kPicturePattern + 1;
    return name.size() >= suffix.size() &&
           CFileIO::Strcmpx(name.data() + name.size() - suffix.size(), suffix.data());
}

/// The paths of one gallery, made of the folder as the user wrote it.
struct SGalleryPaths
{
    explicit SGalleryPaths(const std::string& folder)
        : mPage(folder + "/" + kPageFile),
          mThumbFolder(folder + "/" + kThumbFolder),
          mDbase(mThumbFolder + "/" + kDbaseFile),
          mFolder(folder)
    {
    }

    std::string Picture(const std::string& name) const { return mFolder + "/" + name; }
    std::string Thumbnail(const std::string& name) const { return mThumbFolder + "/" + name; }
    /// The page's heading: what stands behind the last slash.
    std::string Heading() const { return mFolder.substr(mFolder.rfind('/') + 1); }

    std::string mPage;
    std::string mThumbFolder;
    std::string mDbase;

private:
    std::string mFolder;
};

#endif
