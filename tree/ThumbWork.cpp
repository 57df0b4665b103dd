#include "tree/ThumbWork.h"

#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <new>
#include <sstream>
#include <string_view>

#include "app/CDraft.h"
#include "app/CThumbnail.h"
#include "app/GalleryLayout.h"
#include "app/OutputFile.h"
#include "tree/Orientation.h"
#include "tree/STreeOptions.h"

namespace {

constexpr char kAlways = '+';
constexpr char kIfWrong = '?';
constexpr int kFastFactor = 2;  // the decoder's picture is this many thumbnails long at least

/// A picture's name taken apart.
struct SPicture
{
    explicit SPicture(const std::string& path)
        : mPath(path),
          mName(path.substr(path.rfind('/') + 1)),
          mGallery(path.substr(0, path.rfind('/')))
    {
    }

    std::string mPath;
    std::string mName;
    SGalleryPaths mGallery;
};

/// The folder of drafts that the last picture had, and which the next one probably has, too. Null
/// while none is open.
std::unique_ptr<CDraftFolder>& Drafts()
{
    static std::unique_ptr<CDraftFolder> drafts;
    return drafts;
}

EReplaced OpenDrafts(const std::string& path)
{
    if (Drafts() && Drafts()->Path() == path)
        return EReplaced::kDone;
    Drafts() = std::make_unique<CDraftFolder>(path);
    const EReplaced opened = Drafts()->Open();
    if (opened != EReplaced::kDone)
        Drafts().reset();
    return opened;
}

EReplaced WriteDraft(CThumbnail& thumbnail, const std::string& target, const std::string& folder)
{
    EReplaced opened = OpenDrafts(folder);
    if (opened != EReplaced::kDone)
        return opened;
    CDraft draft(*Drafts(), target);
    opened = draft.Open();
    if (opened != EReplaced::kDone)
        return opened;
    if (!thumbnail.Write(draft.Stream(), target.c_str()))
        return EReplaced::kFailed;
    return draft.PutInPlace();
}

/// Puts a thumbnail in place when it is complete; where a draft is forbidden, overwrites the old
/// one.
bool WriteThumb(CThumbnail& thumbnail, const SPicture& picture)
{
    const std::string target = picture.mGallery.Thumbnail(picture.mName);
    const std::string folder = picture.mGallery.mThumbFolder + "/" + kThumbDrafts;
    EReplaced result = EReplaced::kForbidden;
    if (!IsMissing(target) && MayReplace(target))
        result = WriteDraft(thumbnail, target, folder);
    if (result == EReplaced::kLost) {  // the folder is another one by now
        Drafts().reset();
        result = WriteDraft(thumbnail, target, folder);
    }
    if (result == EReplaced::kForbidden)
        return thumbnail.Write(target.c_str());
    return result == EReplaced::kDone;
}

/// Whether there is a thumbnail whose longer side has this length. Nothing but a regular file is
/// opened.
bool IsThumbRight(const std::string& path, int size)
{
    struct stat status = {};
    CGraflibJpeg image;
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0 &&
           image.GetSize(path.c_str(), 0, 0) && std::max(image.mWidth, image.mHeight) == size;
}

SThumbResult MakeThumb(const SPicture& picture, const STreeOptions& options)
{
    CThumbnail thumbnail;
    thumbnail.mImage.mKeepProfile = options.mProfile;
    thumbnail.mImage.mLeastSide = options.mFast ? kFastFactor * options.mThumbSize : 0;
    if (!thumbnail.Read(picture.mPath.c_str(), options.mThumbSize) || !thumbnail.mImage.CanWrite())
        return {EThumb::kUnreadable, thumbnail.mImage.mWarnings};
    if (options.mUpright)
        TurnUpright(thumbnail.mImage, ReadOrientation(picture.mPath.c_str()));
    const bool written = WriteThumb(thumbnail, picture);
    return {written ? EThumb::kMade : EThumb::kUnwritable, thumbnail.mImage.mWarnings};
}

/// A picture for which memory runs out counts as one that can't be read.
SThumbResult TryToMakeThumb(const SPicture& picture, const STreeOptions& options)
{
    try {
        return MakeThumb(picture, options);
    } catch (const std::bad_alloc&) {
        return {EThumb::kUnreadable, 0};
    }
}

std::string_view FirstLine(std::string_view text)
{
    return text.substr(0, text.find('\n'));
}

}  // namespace

std::string ThumbRequest(const std::string& picture, bool ifWrong)
{
    return (ifWrong ? kIfWrong : kAlways) + picture;
}

std::string MakeRequestedThumb(const std::string& request, const STreeOptions& options)
{
    const SPicture picture(request.substr(1));
    SThumbResult result{EThumb::kKept, 0};
    if (request[0] == kAlways ||
        !IsThumbRight(picture.mGallery.Thumbnail(picture.mName), options.mThumbSize))
        result = TryToMakeThumb(picture, options);
    std::ostringstream reply;
    reply << static_cast<int>(result.mOutcome) << ' ' << result.mWarnings;
    return reply.str();
}

SThumbResult ReadThumbReply(const std::string& reply)
{
    std::istringstream stream(reply);
    int outcome = static_cast<int>(EThumb::kUnwritable);
    SThumbResult result;
    stream >> outcome >> result.mWarnings;
    result.mOutcome = static_cast<EThumb>(outcome);
    return result;
}

std::string JpegMessage(const std::string& printed, const std::string& picture,
                        const std::string& thumbnail)
{
    std::string_view text = printed;
    const auto skip = [&text](const std::string& line) {
        const auto at = text.find(line);
        if (at != std::string_view::npos)
            text.remove_prefix(at + line.size());
        return at != std::string_view::npos;
    };
    skip("Reading " + picture + "\n");
    const std::string_view message = FirstLine(text);
    if (!message.starts_with(FirstLine(picture + " Width=")))
        return std::string(message);
    return skip("Writing " + thumbnail + "\n") ? std::string(FirstLine(text)) : "";
}
