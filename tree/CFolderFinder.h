#ifndef TESSEL_TREE_CFOLDERFINDER_H
#define TESSEL_TREE_CFOLDERFINDER_H

#include <dirent.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tree/STreeOptions.h"

class CReport;

/// Where a folder lies.
struct SFolder
{
    std::size_t mRoot = 0;  ///< the named folder at or below which it lies, by its number
    std::string mPath;      ///< begins as the named folder was written
    std::string mRelative;  ///< from the named folder on, which is itself ""
};

/// A folder with a gallery, open and listed.
struct SFoundFolder : SFolder
{
    struct SCloser
    {
        void operator()(DIR* folder) const { closedir(folder); }
    };

    explicit SFoundFolder(SFolder folder) : SFolder(std::move(folder)) {}

    std::unique_ptr<DIR, SCloser> mHandle;
    std::vector<std::string> mPictures;  ///< names *.jpg, as the folder gives them
    std::vector<std::string> mPages;     ///< those that are there as regular files
    long mPassedOver = 0;                ///< how many are named *.jpeg
    bool mHasThumbFolder = false;        ///< a real folder, no link
    bool mHasDrafts = false;             ///< perhaps: of pages, left by a killed run
};

/// Finds the galleries at and below the named folders, one after the other: folders that hold a
/// *.jpg or a database. Links to folders are not entered, nor folders named as the thumbnail
/// folder, with a leading dot, or as the options exclude. A folder that is named itself is found
/// once, whatever its name is, and with the folders named before it are not found again below
/// another.
///
/// Keeps the names of folders on the way alone, however many galleries there are. What can't be
/// listed is reported. Used by one thread.
class CFolderFinder
{
public:
    /// The options and the report outlive the finder.
    CFolderFinder(const STreeOptions& options, CReport& report);

    /// The next gallery; nothing behind the last, and once the run is interrupted.
    std::optional<SFoundFolder> Next();
    /// The gallery of a folder that was found before, listed again; nothing where it has none now.
    std::optional<SFoundFolder> Again(const SFolder& folder);

private:
    using Identity = std::pair<dev_t, ino_t>;

    bool BeginNextRoot();
    std::optional<SFoundFolder> Visit(SFolder folder);
    bool Open(SFoundFolder& found) const;
    bool List(SFoundFolder& found, std::vector<std::string>& folders) const;
    void Add(const dirent& entry, SFoundFolder& found, std::vector<std::string>& folders) const;
    bool IsEntered(std::string_view name) const;
    bool IsOthersTurn(const SFoundFolder& found);

    const STreeOptions& mOptions;
    CReport& mReport;
    std::set<Identity> mRoots;   // found in their own turn
    std::set<Identity> mBegun;   // those whose turn it was
    std::size_t mRoot = 0;       // the next one to begin with
    std::vector<SFolder> mToDo;  // folders to visit, the next one last
};

#endif
