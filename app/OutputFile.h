#ifndef TESSEL_APP_OUTPUTFILE_H
#define TESSEL_APP_OUTPUTFILE_H

/// Care with what already stands where the gallery's files go. The folder may come from strangers:
/// a link there could lead a writer out of the folder, a file may share its contents with one of
/// the originals, a FIFO would hold the run. So nothing is written into what exists: it is removed,
/// and a new file created. Functions without state, for any thread.

/// True where a file can take the place of what stands there: of nothing, a file, a link (not of
/// what it leads to), a FIFO or a socket, but not of a folder or a device.
bool CanReplace(const char* path);

/// Makes way for a new file; false where that can't be. In a folder that can't be changed, an old
/// file that shares its contents with no other stays, to be written into.
bool MakeWay(const char* path);

/// Removes a symbolic link, and nothing else.
void RemoveLink(const char* path);

/// True for a regular file, also at the end of a link: what can be read to an end without waiting.
bool IsReadable(const char* path);

#endif
