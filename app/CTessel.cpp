#include "app/CTessel.h"

#include <cstddef>
#include <vector>

#include "app/CIndexPage.h"
#include "app/OutputFile.h"
#include "util/CFileIO.h"

void CTessel::CreateThumbs(const char* folder)
{
    CFileIO files;
    std::vector<std::string> names;
    if (!files.ResolveWildCard(folder, kPicturePattern, &names))
        return;

    const std::string prefix = std::string(folder) + "/";
    const std::string thumbFolder = prefix + kThumbFolder;
    const std::string thumbPrefix = thumbFolder + "/";
    const std::string dbase = thumbPrefix + kDbaseFile;
    CIndexPage page(prefix + kPageFile);
    const bool store = MakeThumbFolder(thumbFolder, dbase);
    if (store)
        ReadDbase(dbase.c_str());
    const std::vector<const SFileInfo*> records = FindRecords(names);

    const std::string path(folder);
    page.WriteHead(path.substr(path.rfind('/') + 1));
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string& name = names[i];
        page.AddPicture(name);
        if (TestFile(folder, name.c_str(), records[i])) {
            const std::string source = prefix + name;
            const std::string target = thumbPrefix + name;
            MakeThumb(source.c_str(), target.c_str(), mThumbSize, store);
        }
    }
    page.WriteTail();
    if (store)
        WriteDbase(dbase.c_str());
}
