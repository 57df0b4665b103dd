#ifndef TESSEL_APP_OUTPUTFILE_H
#define TESSEL_APP_OUTPUTFILE_H

#include <fstream>
#include <string>

/// Care with what already stands where the gallery's files go. The folder may come from strangers:
/// a link there could lead a writer out of the folder, a file may share its contents with one of
/// the originals, a FIFO would hold the run. These are replaced. An ordinary file is written anew
/// and keeps its mode and owner. Functions without state, for any thread.

/// Makes way for a file to be opened for writing: removes a link (not what it leads to), a hard
/// link, a FIFO or a socket. False for what can't be removed, a folder and a device.
bool MakeWay(const char* path);

/// Creates the thumbnail folder where there is none. False where a link stands in its place that
/// leads to neither an empty folder nor one that holds the database file `dbase`: such a link is
/// left alone, and nothing may be written through it.
bool MakeThumbFolder(const std::string& folder, const std::string& dbase);

/// True for a file that can be read to an end without waiting, also at the end of a link. Folders
/// count: they read as empty files.
bool IsReadable(const char* path);

/// A file that is written aside, under a name that no other run uses, and put in the place of the
/// old one when it is complete: whoever is killed meanwhile loses nothing. It has the old one's
/// mode and owner. The drafts of killed runs are removed by the next one that comes to an end.
class CDraft
{
public:
    /// Opens a draft for `path`. The stream isn't open where that can't be, such as in a folder
    /// that can't be changed, or beside a file of somebody else's.
    explicit CDraft(const std::string& path);
    CDraft(const CDraft&) = delete;
    CDraft& operator=(const CDraft&) = delete;
    /// Removes what hasn't been put in place.
    ~CDraft();

    /// True where a draft may take the place of what stands at `path`: of nothing, of what MakeWay
    /// removes, and of a file that can be both read and written.
    static bool MayReplace(const char* path);
    /// Puts the draft, which is closed, in place. False with the system's errno: ENOENT when
    /// another run has removed it.
    bool PutInPlace();

    std::ofstream mStream;

private:
    bool Create();
    bool TakeOn(int file) const;
    void RemoveDrafts() const;

    std::string mPath;
    std::string mFolder;  // of drafts, beside the path
    std::string mName;    // of this one; empty while there is none
};

#endif
