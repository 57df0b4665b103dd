#ifndef TESSEL_TREE_INTERRUPTION_H
#define TESSEL_TREE_INTERRUPTION_H

/// @file
/// A request to end the run, by a key on the terminal or by another program. The state belongs to
/// the process: there is one.

/// Lets SIGINT, SIGTERM and SIGHUP no longer end the process, but be noted. Returns a descriptor
/// that can be read once one has come; -1 where the system has none.
int WatchInterruption();
/// The number of the first such signal that has come; 0 while there is none.
int Interruption();

#endif
