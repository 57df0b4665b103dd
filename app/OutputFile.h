#ifndef TESSEL_APP_OUTPUTFILE_H
#define TESSEL_APP_OUTPUTFILE_H

/// Care with what already stands where the gallery's files go. The folder may come from strangers:
/// a link there could lead a writer out of the folder, a file may share its contents with one of
/// the originals, a FIFO would hold the run. So nothing is written into what exists: it is removed,
/// and a new file created. Functions without state, for any thread.

/// Makes way for a new file; false when something stands there that can't be removed, such as a
/// folder, and that isn't an ordinary file to be written into.
bool MakeWay(const char* path);

/// Removes a symbolic link, and nothing else.
void RemoveLink(const char* path);

/// True for a regular file, also at the end of a link: what can be read to an end.
bool IsReadable(const char* path);

#endif
