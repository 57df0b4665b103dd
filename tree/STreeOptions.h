#ifndef TESSEL_TREE_STREEOPTIONS_H
#define TESSEL_TREE_STREEOPTIONS_H

#include <stdexcept>
#include <string>
#include <vector>

#include "app/GalleryLayout.h"

/// What the command line of tessel-tree asks for. This file and its source are the only place that
/// knows the options' names. A plain record: whoever has it may change it. The functions keep
/// nothing and are for any thread.
struct STreeOptions
{
    std::vector<std::string> mFolders;   ///< as written, at least one; none is empty
    std::vector<std::string> mExcluded;  ///< names of more folders that aren't entered
    std::vector<std::string> mMachines;  ///< ":" is this one; empty: this one alone
    std::string mLog;                    ///< file for what is printed; empty: none
    int mJobs = 0;                       ///< at a time, on each machine; 0: one a core
    int mThumbSize = kDefaultThumbSize;  ///< pixels, the longer side
    bool mUpright = false;               ///< thumbnails are turned as the camera was held
    bool mProfile = false;               ///< thumbnails keep the pictures' colour profiles
    bool mPage = false;                  ///< write the pages for today's browsers
    bool mByTime = false;                ///< pages in the order of time, not of names
    bool mPrune = false;                 ///< remove what belongs to pictures that are gone
    bool mRepair = false;                ///< make thumbnails again that are missing or not right
    bool mRemake = false;                ///< make all thumbnails again
    bool mFast = false;                  ///< let the decoder shrink the pictures first
    bool mOnly = false;                  ///< the folders themselves, not those below them
    bool mHelp = false;                  ///< only say how the program is called
    bool mVersion = false;               ///< only say which one it is
};

/// A command line that isn't understood. `what()` is one line for the user, without the program's
/// name: it names the option, or says what is wrong with the folders.
class CUsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Reads a command line, without the program's name. Options stand anywhere before `--`, a value
/// is the next argument or stands behind `=`. Of an option that is repeated the last one counts,
/// but all of --exclude and -S do. Throws CUsageError for everything it doesn't know and for every
/// value that isn't exactly right. Folders may be missing only beside --help and --version.
STreeOptions ParseOptions(const std::vector<std::string>& arguments);

/// The arguments, without folders, that make another machine's tessel-tree do the same in the
/// folders it is given. What one process does for the whole run is left out: -S, --log, --page,
/// --sort and --prune.
std::vector<std::string> ArgumentsForMachine(const STreeOptions& options);

/// The page that --help prints, for a terminal of 80 columns. Its last line is complete.
const char* UsageText();

#endif
