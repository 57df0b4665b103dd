#include "app/CTessel.h"

#include <map>

#include "tests/support/TestSupport.h"
#include "util/CFileIO.h"

/// A gallery whose files are worked out apart from the program: thumbnails through the library's
/// whole-picture operations, page and database by hand.
struct CTesselTest : FolderTest
{
    std::map<std::string, std::string> mPictures;  // by path, also thumbnails, as a run leaves them
    std::string mRecords;

    void AddPicture(const std::string& name, int components, const Sizes& sizes)
    {
        const std::string path = mFolder / name;
        mPictures[path] = SampleJpeg(sizes[0], sizes[1], components);
        WriteAll(path, mPictures[path]);
        TestImage image;
        image.Read(path.c_str(), nullptr);
        OutputOf([&] { image.DownScaleFix2(sizes[2], sizes[3]); });
        image.Write((mFolder / "made").c_str(), true, nullptr);
        mPictures[mFolder / "tessel" / name] = ReadAll(mFolder / "made");
        fs::remove(mFolder / "made");
        mRecords += name + "\t1000\n";
    }

    /// The page of pictures in the order in which the folder lists them.
    std::string PageOf(const Names& names) const
    {
        std::string cells;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (i % 5 == 0)
                cells += "<tr>\n";
            cells += "  <td><a href=\"" + names[i] + "\"><img src=\"tessel/" + names[i] +
                     "\"></a><br><font size=2>" + names[i] + "</font></td>\n";
            if (i % 5 == 4 || i + 1 == names.size())
                cells += "</tr>\n";
        }
        return "<html><body>\n\n<center>\n<h2>" + mFolder.filename().string() + "</h2>\n<table>\n" +
               cells + "</table>\n</body></html>\n\n";
    }
};

TEST_F(CTesselTest, MakesAGalleryToTheByteAndNothingElse)
{
    // Width and height of the picture and of its thumbnail of 100 pixels, cut in single precision.
    const std::tuple<const char*, int, Sizes> rows[] = {
        {"LAND.JPG", 3, {300, 200, 100, 66}},   {"a <&>\".jpg", 3, {1, 1, 100, 100}},
        {"cut1.jpg", 1, {100, 53, 100, 52}},    {"cut2.jpg", 1, {200, 106, 100, 52}},
        {"cut3.jpg", 3, {300, 159, 100, 52}},   {"cut4.jpg", 3, {201, 200, 100, 99}},
        {"last.jpg", 1, {100, 100, 100, 100}},  {"long.jpg", 3, {10000, 50, 100, 1}},
        {"tall.Jpg", 1, {50, 10000, 1, 100}},   {"thin.jpg", 3, {2000, 3000, 66, 100}},
        {"wide.jpg", 3, {1920, 1080, 100, 56}},
    };
    for (const auto& [name, components, sizes] : rows)
        AddPicture(name, components, sizes);
    Run("touch -d @1000 *.*");
    Names names;
    CFileIO::ResolveWildCard(mFolder.c_str(), "*.jpg", &names);
    Run(TESSEL_PROGRAM " -tsize 100 " + mFolder.string());
    EXPECT_EQ(ReadAll(mFolder / "index.html"), PageOf(names));
    EXPECT_EQ(ReadAll(mFolder / "tessel/tesselbase.txt"), mRecords);
    for (const auto& [path, content] : mPictures)
        EXPECT_TRUE(AreSame(ReadAll(path), content)) << path;
    const auto entries = std::distance(fs::recursive_directory_iterator(mFolder), {});
    EXPECT_EQ(entries, 11 + 11 + 3) << "pictures, thumbnails, and page, folder and database";
}

TEST_F(CTesselTest, RecordsInMemoryWinOverThoseOfTheFile)
{
    WriteAll(mFile, "a\t1\nb\t2\n");
    CTessel tessel;
    tessel.mFileInfoSet = {{"a", 9}};
    tessel.ReadDbase(mPath);
    EXPECT_EQ(DatabaseText(tessel.mFileInfoSet), "a\t9\nb\t2\n");
}
