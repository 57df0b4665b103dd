#ifndef TESSEL_APP_OUTPUTFILE_H
#define TESSEL_APP_OUTPUTFILE_H

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>
#include <string>

/// @file
/// Care with what already stands where the gallery's files go. The folder may come from strangers:
/// a link could lead a writer out of the folder, a file may share its contents with one of the
/// originals, a FIFO would hold the run. These are replaced. An ordinary file is overwritten and
/// keeps its mode and owner. Functions without state, for any thread.

/// The mode of a file that is new, less the umask.
constexpr int kNewFileMode = 0666;

/// True for a regular file with one name, whose contents are its own.
bool IsOrdinary(const struct stat& status);
/// True where nothing stands, not even a link to nothing.
bool IsMissing(const std::string& path);
/// True where a new file may take the place of what stands at `path`: of nothing, of an ordinary
/// file that can be both read and written, of a link, a hard link, a FIFO or a socket.
bool MayReplace(const std::string& path);

/// Opens a file to be written from its start. Creates it, empties an ordinary file, and replaces a
/// link (not what it leads to), a hard link, a FIFO or a socket by a new file. Nothing is opened
/// through a link, also when one appears meanwhile. Null for a folder, a device, and whatever can't
/// be opened. The stream belongs to the caller, who ends it with CloseOutput.
std::FILE* OpenOutput(const char* path);
/// Closes the stream. False when anything written to it is lost: some errors show only now, when
/// the last bytes go to the disk or to a server.
bool CloseOutput(std::FILE* stream);

/// Creates the thumbnail folder where there is none. False where a symbolic link stands in its
/// place that must not be followed: one that leads to neither an empty folder nor one that holds
/// the database file `dbase`, and one that belongs neither to who runs the program nor to the owner
/// of that folder. Nothing may be written through such a link.
bool MakeThumbFolder(const std::string& folder, const std::string& dbase);

/// True for a file that can be read to an end without waiting, also at the end of a link. Folders
/// count: they read as empty files. A relative path begins at the open folder, or at the current
/// one.
bool IsFileOrFolder(const char* path, int folder = AT_FDCWD);

#endif
