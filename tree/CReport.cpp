#include "tree/CReport.h"

#include <algorithm>
#include <ostream>

#include "tree/Escape.h"
#include "tree/NaturalOrder.h"
#include "tree/PageFrame.h"

namespace {

/// A name with what is said of it.
std::string Line(const std::string& name, const std::string& words)
{
    return words.empty() ? name : name + ": " + words;
}

void WriteList(std::ostream& out, const char* heading, std::vector<std::string>& lines)
{
    if (lines.empty())
        return;
    std::sort(lines.begin(), lines.end(), IsBefore);
    // What fails whenever a gallery is saved is said once.
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    out << heading << '\n';
    for (const std::string& line : lines)
        out << "  " << Printable(line) << '\n';
}

}  // namespace

void CReport::AddGallery(long pictures)
{
    ++mGalleries;
    mPictures += pictures;
}

void CReport::AddMissing(const std::string& picture, const std::string& message)
{
    mMissing.push_back(Line(picture, message));
}

void CReport::AddDamaged(const std::string& picture, const std::string& message, bool isOlder)
{
    mDamaged.push_back(Line(picture, message) + (isOlder ? " (an older thumbnail stays)" : ""));
}

void CReport::AddUnfinished(const std::string& folder, const std::string& reason)
{
    mUnfinished.push_back(Line(folder, reason));
}

void CReport::Write(std::ostream& out)
{
    out << CountOf(mGalleries, "gallery", "galleries") << ", "
        << CountOf(mPictures, "picture", "pictures") << ", "
        << CountOf(mThumbnails, "thumbnail", "thumbnails") << " made\n";
    WriteList(out, "Without a thumbnail:", mMissing);
    WriteList(out, "Damaged:", mDamaged);
    if (mPassedOver > 0)
        out << "Passed over: " << CountOf(mPassedOver, "picture", "pictures")
            << " named *.jpeg; only *.jpg is taken\n";
    WriteList(out, "Not finished:", mUnfinished);
    WriteList(out, "Not written:", mFailures);
    out.flush();
}
