#include "tree/GalleriesPage.h"

#include <algorithm>

#include "app/GalleryLayout.h"
#include "tree/AlbumPage.h"
#include "tree/NaturalOrder.h"
#include "tree/PageFrame.h"

namespace {

SPageCell MakeCell(const SGalleryEntry& gallery, const std::string& nameOfTop)
{
    const std::string folder = gallery.mPath.empty() ? "" : gallery.mPath + "/";
    SPageCell cell;
    cell.mTarget = folder + kAlbumFile;
    if (!gallery.mFirstThumb.empty())
        cell.mImage = folder + kThumbFolder + "/" + gallery.mFirstThumb;
    cell.mCaption = gallery.mPath.empty() ? nameOfTop : gallery.mPath;
    cell.mNote = CountOf(gallery.mPictures, "picture", "pictures");
    return cell;
}

}  // namespace

std::string MakeGalleriesPage(const std::string& heading, std::vector<SGalleryEntry> galleries,
                              int thumbSize)
{
    std::sort(galleries.begin(), galleries.end(),
              [](const SGalleryEntry& left, const SGalleryEntry& right) {
                  return IsBefore(left.mPath, right.mPath);
              });
    SPage page;
    page.mHeading = "Galleries of " + heading;
    page.mThumbSize = thumbSize;
    for (const SGalleryEntry& gallery : galleries) {
        if (gallery.mPictures > 0)
            page.mCells.push_back(MakeCell(gallery, heading));
    }
    page.mNote = CountOf(static_cast<long>(page.mCells.size()), "gallery", "galleries");
    return MakePage(page);
}
