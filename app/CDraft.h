#ifndef TESSEL_APP_CDRAFT_H
#define TESSEL_APP_CDRAFT_H

#include <cstdio>
#include <string>

/// How an attempt to replace a file ended.
enum class EReplaced {
    kDone,       ///< the new file stands in its place
    kFailed,     ///< it could not be written, such as on a full disk; the old file stays
    kForbidden,  ///< the folder or the old file does not let another file take its place
    kLost        ///< another run has removed the draft
};

/// The folder in which drafts lie, beside the files that they are to replace. It must be a real
/// folder: everything in it is reached through its descriptor, so that no link that a stranger
/// leaves in its place leads elsewhere. Several processes may use one folder.
class CDraftFolder
{
public:
    explicit CDraftFolder(const std::string& path) : mPath(path) {}
    CDraftFolder(const CDraftFolder&) = delete;
    CDraftFolder& operator=(const CDraftFolder&) = delete;
    ~CDraftFolder();

    /// Creates the folder where it is missing, and opens it. What else stands in its place stays:
    /// drafts are forbidden then.
    EReplaced Open();
    /// Removes all drafts in the open folder, also those of runs that still write: these fail with
    /// kLost.
    void RemoveDrafts() const;
    /// Removes the folder if it is empty.
    void Remove() const;

    const std::string& Path() const { return mPath; }
    int File() const { return mFile; }

private:
    std::string mPath;
    int mFile = -1;
};

/// A file that is written aside and put in the place of the old one when it is complete: whoever is
/// killed meanwhile, or finds no room for it, loses nothing. It takes over the old file's owner,
/// mode and extended attributes, access lists among them. One object is used by one thread.
class CDraft
{
public:
    /// A draft for the file `path`, to lie in `folder`, which is open and outlives the draft.
    CDraft(const CDraftFolder& folder, const std::string& path) : mFolder(folder), mPath(path) {}
    CDraft(const CDraft&) = delete;
    CDraft& operator=(const CDraft&) = delete;
    /// Removes a draft that was not put in place.
    ~CDraft();

    /// Creates the draft under a name that no other process uses, and opens Stream for writing.
    EReplaced Open();
    /// The open draft.
    std::FILE* Stream() { return mStream; }
    /// Closes the draft and puts it in place.
    EReplaced PutInPlace();

private:
    int CreateFile();
    bool TakeOverProperties(int file) const;

    const CDraftFolder& mFolder;
    std::string mPath;
    std::string mName;  // in the folder; empty while there is no draft
    std::FILE* mStream = nullptr;
};

#endif
