#include "app/CTessel.h"

#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "app/CIndexPage.h"
#include "app/CThumbnail.h"
#include "app/OutputFile.h"
#include "util/CFileIO.h"

namespace {

/// The page's file while the gallery is made. A page that can't be written whole is left out.
class CPageFile
{
public:
    explicit CPageFile(const std::string& path) : mPath(path), mStream(OpenOutput(path.c_str())) {}
    CPageFile(const CPageFile&) = delete;
    CPageFile& operator=(const CPageFile&) = delete;
    ~CPageFile()
    {
        if (mStream && !CloseOutput(mStream))
            unlink(mPath.c_str());
    }

    void Write(const std::string& text)
    {
        if (mStream)
            std::fwrite(text.data(), 1, text.size(), mStream);
    }

private:
    std::string mPath;
    std::FILE* mStream;
};

/// Records a picture that a thumbnail is made of, with its time.
void Record(std::set<SFileInfo>& records, const SFileInfo* record, const std::string& name,
            long time)
{
    if (record)
        record->mTime = time;
    else
        records.insert({name, time});
}

}  // namespace

void CTessel::CreateThumbs(const char* folder)
{
    std::vector<std::string> names;
    if (!CFileIO::ResolveWildCard(folder, kPicturePattern, &names))
        return;
    const SGalleryPaths paths(folder);
    CPageFile file(paths.mPage);
    const bool hasThumbs = MakeThumbFolder(paths.mThumbFolder, paths.mDbase);
    const bool hasDbase = hasThumbs && ReadDatabase(paths.mDbase.c_str(), &mFileInfoSet);

    CIndexPage page;
    file.Write(page.Head(paths.Heading()));
    for (const std::string& name : names) {
        file.Write(page.Cell(name));
        if (hasThumbs && TestFile(folder, name.c_str()))
            MakeThumb(paths.Picture(name).c_str(), paths.Thumbnail(name).c_str(), mThumbSize);
    }
    file.Write(page.Tail());
    if (hasDbase)
        WriteDbase(paths.mDbase.c_str());
}

void CTessel::MakeThumb(const char* source, const char* target, int size)
{
    CThumbnail thumbnail;
    if (thumbnail.Read(source, size))
        thumbnail.Write(target);
}

bool CTessel::GetUnixFileTime(const char* path, long* time)
{
    return GetFileTime(path, time);
}

bool CTessel::TestFile(const char* folder, const char* name)
{
    const auto known = mFileInfoSet.find({name});
    const SFileInfo* const record = known == mFileInfoSet.end() ? nullptr : &*known;
    const SPictureState state = TestPicture(SGalleryPaths(folder).Picture(name).c_str(), record);
    if (state.mMustMake && state.mHasTime)
        Record(mFileInfoSet, record, name, state.mTime);
    return state.mMustMake;
}

void CTessel::ReadDbase(const char* path)
{
    ReadDatabase(path, &mFileInfoSet);
}

void CTessel::WriteDbase(const char* path)
{
    WriteDatabase(path, mFileInfoSet);
}
