#ifndef TESSEL_APP_CTESSEL_H
#define TESSEL_APP_CTESSEL_H

#include <set>

#include "app/Database.h"
#include "app/GalleryLayout.h"

/// The gallery builder: one per run, used by one thread. No file stays open between calls, and no
/// failure is reported to the caller: a picture that can't be read or a file that can't be written
/// is left out, and the rest is done. Only an error of the JPEG encoder, such as a full disk, ends
/// the process.
///
/// A symbolic link in the place of a file is replaced, not followed. A link in the place of the
/// thumbnail folder is followed under the conditions of MakeThumbFolder: thumbnails and database
/// then lie where it leads. Where it must not be followed, the page alone is written.
class CTessel
{
public:
    int mThumbSize = kDefaultThumbSize;  ///< pixels, the longer side of a thumbnail
    std::set<SFileInfo> mFileInfoSet;    ///< the thumbnail database

    /// Builds the gallery of a folder: lists its pictures, makes the thumbnails of those that are
    /// new or changed, rewrites page and database. A folder that can't be listed is left alone, and
    /// so is a database that stands there and can't be read whole.
    void CreateThumbs(const char* folder);

    /// Makes one thumbnail with the longer side of `size` pixels (of the default size, if that is
    /// below 1), in the picture's proportions. Writes what it does to standard output.
    void MakeThumb(const char* source, const char* target, int size);

    /// The modification time of a file; false when it can't be opened.
    bool GetUnixFileTime(const char* path, long* time);
    /// True when a picture is new, or later than its record; it is then recorded with its time.
    /// True without a record when the picture can't be opened: a later run tries again.
    bool TestFile(const char* folder, const char* name);
    /// Adds the database file's records to those in memory, which win over records of the same
    /// name. A file that can't be read adds nothing.
    void ReadDbase(const char* path);
    /// Writes all records as a new database file, which takes the place of an old one when it is
    /// complete. A name that the format can't hold is left out.
    void WriteDbase(const char* path);
};

#endif
