#ifndef TESSEL_APP_PROCESS_H
#define TESSEL_APP_PROCESS_H

/// @file
/// What the programs set up before they do anything else.

/// Prepares this process: standard descriptors that the caller closed are opened on /dev/null, as
/// the first files to be opened would otherwise get their numbers; whole lines are written in one
/// piece; a reader of standard output that leaves, and a limit on the size of files, are errors of
/// a write and don't end the process; the allocator keeps memory for the next picture.
void PrepareProcess();

#endif
