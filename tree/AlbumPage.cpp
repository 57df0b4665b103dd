#include "tree/AlbumPage.h"

#include <algorithm>

#include "app/GalleryLayout.h"
#include "tree/NaturalOrder.h"
#include "tree/PageFrame.h"

void SortPictures(std::vector<SAlbumPicture>& pictures, bool byTime)
{
    std::sort(pictures.begin(), pictures.end(),
              [byTime](const SAlbumPicture& left, const SAlbumPicture& right) {
                  if (byTime && left.mTime != right.mTime)
                      return left.mTime < right.mTime;
                  return IsBefore(left.mName, right.mName);
              });
}

std::string MakeAlbumPage(const std::string& heading, const std::vector<SAlbumPicture>& pictures,
                          const std::string& linkBack, int thumbSize)
{
    SPage page;
    page.mHeading = heading;
    page.mNote = CountOf(static_cast<long>(pictures.size()), "picture", "pictures");
    page.mBack = linkBack;
    page.mThumbSize = thumbSize;
    for (const SAlbumPicture& picture : pictures) {
        SPageCell cell;
        cell.mTarget = picture.mName;
        if (picture.mHasThumb)
            cell.mImage = std::string(kThumbFolder) + "/" + picture.mName;
        cell.mCaption = picture.mName;
        page.mCells.push_back(cell);
    }
    return MakePage(page);
}
