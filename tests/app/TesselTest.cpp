// What a run leaves in the folder, to the byte.
#include "app/CTessel.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <map>

#include "tests/support/TestSupport.h"
#include "util/CFileIO.h"

using Tessel = FolderTest;

TEST_F(Tessel, MakesAGalleryToTheByte)
{
    const std::tuple<std::string, int, Sizes> rows[] = {
        {"LAND.JPG", 3, {300, 200, 100, 66}},  {"a <&>\".jpg", 3, {1, 1, 100, 100}},
        {"cut1.jpg", 1, {100, 53, 100, 52}},   {"cut2.jpg", 1, {200, 106, 100, 52}},
        {"cut3.jpg", 3, {300, 159, 100, 52}},  {"cut4.jpg", 3, {201, 200, 100, 99}},
        {"last.jpg", 1, {100, 100, 100, 100}}, {"long.jpg", 3, {10000, 50, 100, 1}},
        {"tall.Jpg", 1, {50, 10000, 1, 100}},  {"thin.jpg", 3, {2000, 3000, 66, 100}},
        {"wide.jpg", 3, {1920, 1080, 100, 56}}};
    std::map<std::string, std::string> files, outputs;
    for (const auto& [name, components, sizes] : rows) {
        const std::string path = mFolder / name, thumb = mFolder / "tessel" / name;
        WriteAll(path, files[path] = SampleJpeg(sizes[0], sizes[1], components));
        TestImage image;
        image.Read(path.c_str(), nullptr);
        outputs[name] = OutputOf([&, &size = sizes] {
            std::cout << "Reading " << path << std::endl;
            image.Show(path.c_str());
            image.DownScaleFix2(size[2], size[3]);
            std::cout << "Writing " << thumb << std::endl;
        });
        image.Write(path.c_str(), true, nullptr);
        files[thumb] = ReadAll(path);
        files[mFolder / "tessel/tesselbase.txt"] += name + "\t1000\n";
        WriteAll(path, files[path]);
    }
    Run("touch -d @1000 *.*");
    Names names;  // in the order in which they are listed
    CFileIO::ResolveWildCard(mFolder.c_str(), "*.jpg", &names);
    std::string output, cells;
    for (std::size_t i = 0; i < names.size(); ++i) {
        output += outputs[names[i]];
        cells += (i % 5 == 0 ? "<tr>\n" : "") + std::string("  <td><a href=\"") + names[i] +
                 "\"><img src=\"tessel/" + names[i] + "\"></a><br><font size=2>" + names[i] +
                 "</font></td>\n" + (i % 5 == 4 || i == 10 ? "</tr>\n" : "");
    }
    files[mFolder / "index.html"] = "<html><body>\n\n<center>\n<h2>" + mFolder.filename().string() +
                                    "</h2>\n<table>\n" + cells + "</table>\n</body></html>\n\n";
    for (const std::string& expected : {output, std::string()}) {  // the second run makes nothing
        EXPECT_EQ(Run(TESSEL_PROGRAM " -tsize 100 " + mFolder.string()), expected);
        EXPECT_EQ(std::distance(fs::recursive_directory_iterator(mFolder), {}), 25);
        for (const auto& [path, content] : files)
            EXPECT_TRUE(ReadAll(path) == content) << path;
    }
}

TEST_F(Tessel, ReadsAndHealsDatabases)
{
    WriteAll(mFile,
             "b\t2\r\nd\t\t4\na\t1\tmore\na\t3\n\nno "
             "tab\n\t7\nx\t\nz\t-5\nA\t99999999999999999999\nB\t8589934592\nunended\t1");
    CTessel tessel;
    tessel.ReadDbase(mPath);
    Run("touch -d @5 new.jpg");
    for (const bool isNew : {true, false})
        EXPECT_EQ(tessel.TestFile(mFolder.c_str(), "new.jpg"), isNew);
    EXPECT_TRUE(tessel.TestFile(mFolder.c_str(), "missing.jpg"));
    long time = 7;
    EXPECT_FALSE(tessel.GetUnixFileTime("/no/where", &time));
    EXPECT_EQ(time, 7);
    tessel.mFileInfoSet.insert({{"tab\t", 3}, {"feed\n", 3}, {"return\r", 3}});
    tessel.WriteDbase(mPath);
    EXPECT_EQ(ReadAll(mFile), "\t7\nA\t0\nB\t" +
                                  std::to_string(std::min<std::int64_t>(8589934592, LONG_MAX)) +
                                  "\na\t1\nb\t2\nd\t0\nnew.jpg\t5\nx\t0\nz\t-5\n");
}
