#ifndef TESSEL_TREE_PAGEFRAME_H
#define TESSEL_TREE_PAGEFRAME_H

#include <string>
#include <vector>

/// @file
/// What the pages for today's browsers share: everything but what stands on them. All texts are
/// bytes without escapes, which are added here, and here alone. For any thread.

/// A cell: a picture that is a link, and some words below it.
struct SPageCell
{
    std::string mTarget;   ///< relative path that the cell leads to
    std::string mImage;    ///< relative path of the thumbnail; empty: the caption takes its place
    std::string mCaption;  ///< what the picture is called
    std::string mNote;     ///< may be empty
};

struct SPage
{
    std::string mHeading;  ///< also the title
    std::string mNote;     ///< below the heading
    std::string mBack;     ///< relative path of the page of all galleries, or empty
    int mThumbSize = 0;    ///< pixels, the longer side of a thumbnail
    std::vector<SPageCell> mCells;
};

std::string MakePage(const SPage& page);

/// A number of things, such as "1 picture" and "2 pictures".
std::string CountOf(long count, const std::string& one, const std::string& many);

#endif
