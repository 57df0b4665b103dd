#ifndef TESSEL_TREE_THUMBWORK_H
#define TESSEL_TREE_THUMBWORK_H

#include <string>

struct STreeOptions;

/// @file
/// What a worker process does: makes the thumbnail of one picture. The request and the reply are
/// texts, which this file alone knows. Functions for one thread.

/// How the making of a thumbnail ended.
enum class EThumb {
    kMade,
    kUnreadable,  ///< the picture can't be decoded; an older thumbnail stays
    kUnwritable,  ///< the thumbnail can't be written; an older one stays
    kKept         ///< it was to be made only if the one that stands is not right, and that one is
};

struct SThumbResult
{
    EThumb mOutcome = EThumb::kUnwritable;
    long mWarnings = 0;  ///< libjpeg's, of the picture: more than 0 when it is damaged
};

/// The folder in which thumbnails lie until they are complete, in the thumbnail folder.
constexpr const char* kThumbDrafts = "tessel-tree.new";

/// The request to make the thumbnail of a picture, whose path holds a slash. With `ifWrong`, it is
/// made only where there is none whose longer side is as long as it should be.
std::string ThumbRequest(const std::string& picture, bool ifWrong);
/// Does what is requested and returns the reply. The thumbnail takes the place of an older one when
/// it is complete. Says on standard output what a run of tessel says.
std::string MakeRequestedThumb(const std::string& request, const STreeOptions& options);
/// What a reply says.
SThumbResult ReadThumbReply(const std::string& reply);

/// The line that libjpeg said of a picture, out of all that was printed while its thumbnail was
/// made; empty if it said nothing.
std::string JpegMessage(const std::string& printed, const std::string& picture,
                        const std::string& thumbnail);

#endif
