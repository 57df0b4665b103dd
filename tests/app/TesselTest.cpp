// The program as a whole: what it prints, and every byte that it leaves in the folder.
#include "app/CTessel.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <ctime>
#include <map>
#include <set>

#include "tests/TestSupport.h"
#include "util/CFileIO.h"

constexpr std::int64_t kDistant = std::int64_t{1} << 33;  // a time of the year 2242
/// How it is recorded, also where a long can't hold it.
static const std::string kRecorded = std::to_string(std::min<std::int64_t>(kDistant, LONG_MAX));

struct Tessel : FolderTest
{
    const std::string mTessel = TESSEL_PROGRAM " ";
    const std::string mPage = mFolder / "index.html", mDbase = mFolder / "tessel/tesselbase.txt";
    const std::string mJpeg = SampleJpeg(30, 20);

    void AddPicture(const std::string& name, const std::string& jpeg, std::time_t time) const
    {
        const timespec times[] = {{time, 0}, {time, 0}};
        WriteAll(mFolder / name, jpeg);
        EXPECT_EQ(utimensat(AT_FDCWD, (mFolder / name).c_str(), times, 0), 0);
    }
    /// The pictures in the order in which they are listed.
    Names Listing() const
    {
        Names names;
        CFileIO::ResolveWildCard(mFolder.c_str(), "*.jpg", &names);
        return names;
    }
    std::string Page(const std::string& heading) const
    {
        const Names names = Listing();
        std::string page = "<html><body>\n\n<center>\n<h2>" + heading + "</h2>\n<table>\n";
        for (std::size_t i = 0; i < names.size(); ++i)
            page += (i % 5 == 0 ? "<tr>\n  <td><a href=\"" : "  <td><a href=\"") + names[i] +
                    "\"><img src=\"tessel/" + names[i] + "\"></a><br><font size=2>" + names[i] +
                    "</font></td>\n" + (i % 5 == 4 || i + 1 == names.size() ? "</tr>\n" : "");
        return page + "</table>\n</body></html>\n\n";
    }
};

TEST_F(Tessel, MakesAGalleryToTheByte)
{
    const std::tuple<std::string, int, Sizes> rows[] = {
        {"LAND.JPG", 3, {300, 200, 100, 66}},   {"a <&>\".jpg", 3, {1, 1, 100, 100}},
        {"cut1.jpg", 1, {100, 53, 100, 52}},    {"cut2.jpg", 1, {200, 106, 100, 52}},
        {"cut3.jpg", 3, {300, 159, 100, 52}},   {"cut4.jpg", 3, {201, 200, 100, 99}},
        {"long.jpg", 3, {10000, 50, 100, 1}},   {"tall.Jpg", 1, {50, 10000, 1, 100}},
        {"thin.jpg", 3, {2000, 3000, 66, 100}}, {"wide.jpg", 3, {1920, 1080, 100, 56}}};
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
        files[mDbase] += name + "\t1000\n";
        AddPicture(name, files[path], 1000);
    }
    files[mPage] = Page(mFolder.filename());
    std::string output;
    for (const std::string& name : Listing())
        output += outputs[name];
    for (const std::string& expected : {output, std::string()}) {  // the second run makes nothing
        EXPECT_EQ(Run(mTessel + "-tsize 100 " + mFolder.string()), expected);
        EXPECT_EQ(std::distance(fs::recursive_directory_iterator(mFolder), {}), 23);
        for (const auto& [path, content] : files)
            EXPECT_TRUE(ReadAll(path) == content) << path;
    }
}

TEST_F(Tessel, TakesSizeAndFolderFromTheCommandLine)
{
    EXPECT_EQ(Run(mTessel),
              "tessel <options> <foldername>\n       options: -tsize <thumbsize>\n"
              "       Version " TESSEL_VERSION "\n");
    for (const char* arguments : {". missing", ". -tsize", "-tsize 100"})
        EXPECT_EQ(Run(mTessel + arguments), "");
    EXPECT_TRUE(fs::is_empty(mFolder));
    Run(mTessel + ".");
    EXPECT_TRUE(ReadAll(mPage) == Page(".") && fs::exists(mDbase));
    const std::pair<std::string, int> rows[] = {
        {"elsewhere .", 192},        {"-tsize 99 ./", 99},  {"-tsize 98px ./.", 98},
        {"-TSIZE 80 .", 192},        {"-tsizes 80 .", 192}, {"-tsize big .", 192},
        {"-tsize 0 .", 192},         {"-tsize -5 .", 192},  {"-tsize -tsize 50 .", 50},
        {"-tsize 9 -tsize 64 .", 64}};
    int count = 0;
    for (const auto& [arguments, width] : rows) {
        const std::string folder = arguments.substr(arguments.rfind(' ') + 1) + "/";
        const std::string name = std::to_string(count++) + ".jpg";
        WriteAll(mFolder / name, SampleJpeg(200, 100));
        const std::string output = Run(mTessel + arguments);
        EXPECT_TRUE(output.starts_with("Reading " + folder + name + "\n" + folder + name +
                                       " Width=200 Height=100 mBits=24 Data != NULL\nScaleFakt="));
        EXPECT_TRUE(
            output.ends_with("sizeof(Tpixel)=3\nWriting " + folder + "tessel/" + name + "\n"));
        TestImage thumb;
        thumb.GetSize((mFolder / "tessel" / name).c_str(), 0, 0);
        EXPECT_EQ(thumb.GetShape(), Shape(width, width / 2, 24)) << arguments;
        EXPECT_EQ(ReadAll(mPage), Page(arguments.substr(arguments.find_last_of(" /") + 1)));
    }
    fs::create_directory(mFolder / "70");  // which is both the size and the folder
    WriteAll(mFolder / "70/x.jpg", SampleJpeg(200, 100));
    Run(mTessel + "-tsize 70");
    TestImage thumb;
    EXPECT_TRUE(thumb.GetSize((mFolder / "70/tessel/x.jpg").c_str(), 0, 0) && thumb.mWidth == 70);
}

TEST_F(Tessel, WritesEachLineInOnePiece)
{
    const std::string name = "line\nfeed.jpg", jpeg = SampleJpeg(300, 200);
    WriteAll(mFolder / name, jpeg.substr(0, jpeg.size() / 2));
    constexpr std::size_t kLongestPath = 4096;
    std::string longest = ".";  // whose lines are longer than a page
    while (longest.size() + name.size() + 10 < kLongestPath)
        longest += "/.";
    for (const std::string& folder : {std::string(), std::string("."), longest}) {
        const std::string path = folder + "/" + name;
        int ends[2];  // which keep the pieces apart
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
        const std::string out = std::to_string(ends[1]);
        Run("sh -c '" + mTessel + folder + " >&" + out + " 2>&1'");
        close(ends[1]);
        Names lines;
        for (std::string piece(2 * kLongestPath, 0);;) {
            const ssize_t size = recv(ends[0], piece.data(), piece.size(), 0);
            if (size <= 0)
                break;
            lines.push_back(piece.substr(0, static_cast<std::size_t>(size)));
        }
        close(ends[0]);
        const Names usage{"tessel <options> <foldername>\n", "       options: -tsize <thumbsize>\n",
                          "       Version " TESSEL_VERSION "\n"};
        const Names made{"Reading " + path + "\n",
                         "Premature end of JPEG file\n",
                         path + " Width=300 Height=200 mBits=24 Data != NULL\n",
                         "ScaleFakt=2.44141\n",
                         "sizeof(Tpixel)=3\n",
                         "Writing " + folder + "/tessel/" + name + "\n"};
        EXPECT_EQ(lines, folder.empty() ? usage : made);
        fs::remove_all(mFolder / "tessel");
    }
}

TEST_F(Tessel, RemakesWhatIsNewOrLater)
{
    const auto made = [this] {  // the last thumbnail made
        const std::string output = Run(mTessel + ".");
        return output.substr(output.rfind('/') + 1);
    };
    AddPicture("a.jpg", mJpeg, 1000000);
    EXPECT_EQ(made(), "a.jpg\n");
    constexpr std::int64_t kTimes[] = {-100000, 1000000, 1000001, kDistant};
    for (const std::int64_t time : kTimes) {
        AddPicture("b.jpg", mJpeg, time);
        EXPECT_EQ(made() + made(), "b.jpg\n");
    }
    AddPicture("a.jpg", mJpeg, 5);  // set back: keeps its thumbnail and its record
    fs::remove(mFolder / "b.jpg");  // gone: keeps its record
    EXPECT_EQ(made(), "");
    EXPECT_EQ(ReadAll(mDbase), "a.jpg\t1000000\nb.jpg\t" + kRecorded + "\n");
    fs::remove(mDbase);
    EXPECT_EQ(made(), "a.jpg\n");

    // Whatever names have in common, and whatever records stand between theirs.
    Names names{"tog.jpg",
                "together.jpg",
                "together 1.jpg",
                "together 1.jpg.jpg",
                "together 12345678.jpg",
                "together 123456789.jpg",
                "tog\xff.jpg",
                "tog\x7f.jpg"};
    for (char letter = 'a'; letter <= 'j'; ++letter)  // which differ beyond what is compared first
        names.push_back(std::string("together 1234") + letter + ".jpg");
    for (const std::string& name : names)
        AddPicture(name, mJpeg, 5);
    made();
    std::ofstream(mDbase, std::ios::app) << "a\t9\ntogether 1\t9\ntogether 12345678\t9\nz\t9\n";
    for (const std::string& name : names) {
        AddPicture(name, mJpeg, 6);
        EXPECT_EQ(made() + made(), name + "\n");
    }
}

TEST_F(Tessel, ReadsAndHealsDatabases)
{
    WriteAll(mFile,
             "b\t2\r\nd\t\t4\na\t1\tmore\na\t3\n\nno "
             "tab\n\t7\nx\t\nz\t-5\nA\t99999999999999999999\nB\t8589934592\nunended\t1");
    CTessel tessel;
    tessel.ReadDbase(mPath);
    AddPicture("new.jpg", mJpeg, 5);
    for (const bool isNew : {true, false})
        EXPECT_EQ(tessel.TestFile(mFolder.c_str(), "new.jpg"), isNew);
    EXPECT_TRUE(tessel.TestFile(mFolder.c_str(), "missing.jpg"));
    long time = 7;
    EXPECT_FALSE(tessel.GetUnixFileTime("/no/where", &time));
    EXPECT_EQ(time, 7);
    tessel.mFileInfoSet.insert({{"tab\t", 3}, {"feed\n", 3}, {"return\r", 3}});
    tessel.WriteDbase(mPath);
    EXPECT_EQ(ReadAll(mFile),
              "\t7\nA\t0\nB\t" + kRecorded + "\na\t1\nb\t2\nd\t0\nnew.jpg\t5\nx\t0\nz\t-5\n");
}

TEST_F(Tessel, GoesOnPastWhatFails)
{
    const Names all{"index.html", "tessel/tesselbase.txt", "tessel/x.jpg"};
    for (const std::string& obstacle : {all[0], all[1], all[2], std::string("tessel")}) {
        fs::remove_all(mFolder);
        fs::create_directories(mFolder / obstacle);
        if (obstacle == "tessel") {  // for which a folder is no obstacle
            fs::remove(mFolder / obstacle);
            WriteAll(mFolder / obstacle, "a file");
        }
        fs::create_symlink("no/where", mFolder / "lost.jpg");
        fs::create_directory(mFolder / "folder.jpg");
        WriteAll(mFolder / "text.jpg", "not a picture");
        WriteAll(mFolder / "cut.jpg", mJpeg.substr(0, 30));
        WriteAll(mFile, mJpeg);
        const std::string output = Run(mTessel + ".");
        EXPECT_EQ(output.find("failed"), std::string::npos);
        for (const char* name : {"lost", "folder", "text", "cut", "x"})
            EXPECT_NE(output.find(name + std::string(".jpg\n")), std::string::npos) << name;
        EXPECT_NE(output.find("Empty input file\n"), std::string::npos);  // the folder
        for (const std::string& name : all)
            EXPECT_EQ(fs::is_regular_file(mFolder / name), name.find(obstacle) != 0) << name;
        EXPECT_EQ(ReadAll(mDbase).find("lost.jpg"), std::string::npos);
        EXPECT_EQ(ReadAll(mPage), obstacle == all[0] ? "" : Page("."));
    }
}
