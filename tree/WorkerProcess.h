#ifndef TESSEL_TREE_WORKERPROCESS_H
#define TESSEL_TREE_WORKERPROCESS_H

#include <sys/types.h>

#include <functional>
#include <string>

/// @file
/// The life of a worker of CWorkerPool, in its own process, and the form of what it reads and
/// writes: texts that a zero byte ends. For one thread.

/// Takes the part in front of the next zero byte out of a text; false where there is none.
bool TakePart(std::string& text, std::string& part);

/// Does what is requested until nobody can request any more, and ends the process. `requests` is
/// read; `results` gets what is printed, and the replies. Everything else that is open is closed.
/// `parent` is the process that this one is a copy of, and with which it ends.
[[noreturn]] void RunWorker(pid_t parent, int requests, int results,
                            const std::function<std::string(const std::string& request)>& work);

#endif
