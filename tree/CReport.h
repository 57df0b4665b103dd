#ifndef TESSEL_TREE_CREPORT_H
#define TESSEL_TREE_CREPORT_H

#include <iosfwd>
#include <string>
#include <vector>

/// What there is to say at the end of a run: how much was done, and by name what a person should
/// look after. Nothing is written before Write. Used by one thread.
class CReport
{
public:
    void AddGallery(long pictures);
    void AddThumbnail() { ++mThumbnails; }
    /// Pictures named *.jpeg, which galleries leave out.
    void AddPassedOver(long pictures) { mPassedOver += pictures; }
    /// A picture that has no thumbnail. `message` is libjpeg's, or empty.
    void AddMissing(const std::string& picture, const std::string& message);
    /// A picture found damaged that has a thumbnail: an older one, or one of what could be decoded.
    void AddDamaged(const std::string& picture, const std::string& message, bool isOlder);
    /// A folder that could not be finished.
    void AddUnfinished(const std::string& folder, const std::string& reason);
    /// A file or folder outside the galleries for which the same holds.
    void AddFailure(const std::string& what) { mFailures.push_back(what); }

    /// True when everything that was asked for is done.
    bool IsComplete() const { return mUnfinished.empty() && mFailures.empty(); }
    /// Writes all of it, each name on a line of its own with its control characters shown as `?`.
    void Write(std::ostream& out);

private:
    long mGalleries = 0;
    long mPictures = 0;
    long mThumbnails = 0;
    long mPassedOver = 0;
    std::vector<std::string> mMissing;
    std::vector<std::string> mDamaged;
    std::vector<std::string> mUnfinished;
    std::vector<std::string> mFailures;
};

#endif
