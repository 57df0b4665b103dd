// The program as a whole: what it prints, and every byte that it leaves in the folder.
#include <fcntl.h>
#include <sys/stat.h>

#include <sstream>

#include "app/CTessel.h"
#include "tests/TestSupport.h"
#include "tests/graflib/SlowScaler.h"
#include "util/CFileIO.h"

namespace {

constexpr const char* kDbase = "tessel/tesselbase.txt";

void SetTime(const std::string& path, long seconds)
{
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

std::vector<std::string> Listing(const std::string& folder)
{
    std::vector<std::string> names;
    CFileIO::ResolveWildCard(folder.c_str(), "*.jpg", &names);
    return names;
}

std::string Page(const std::string& heading, const std::vector<std::string>& names)
{
    std::string page = "<html><body>\n\n<center>\n<h2>" + heading + "</h2>\n<table>\n";
    for (std::size_t i = 0; i < names.size(); ++i)
        page += (i % 5 == 0 ? "<tr>\n  <td><a href=\"" : "  <td><a href=\"") + names[i] +
                "\"><img src=\"tessel/" + names[i] + "\"></a><br><font size=2>" + names[i] +
                "</font></td>\n" + (i % 5 == 4 || i + 1 == names.size() ? "</tr>\n" : "");
    return page + "</table>\n</body></html>\n\n";
}

struct SCase
{
    const char* mName;
    int mWidth, mHeight, mComponents, mNewWidth, mNewHeight;
};

/// The thumbnail that a picture must get.
std::string ThumbOf(const std::string& jpeg, const SCase& c)
{
    const int shift = SlowShift(c.mWidth, c.mHeight, c.mNewWidth, c.mNewHeight);
    Bytes rgb;
    for (const unsigned char sample : SlowScale(DecodeJpeg(jpeg), c.mWidth, c.mHeight,
                                                c.mComponents, c.mNewWidth, c.mNewHeight, shift))
        rgb.insert(rgb.end(), c.mComponents == 1 ? 3 : 1, sample);
    return EncodeJpeg(c.mNewWidth, c.mNewHeight, 3, rgb);
}

/// What the program must print while making it.
std::string OutputFor(const std::string& folder, const SCase& c)
{
    std::ostringstream out;
    const std::string path = folder + "/" + c.mName;
    out << "Reading " << path << '\n'
        << path << " Width=" << c.mWidth << " Height=" << c.mHeight
        << " mBits=" << c.mComponents * 8 << " Data != NULL\n";
    if (c.mComponents == 3)
        out << "ScaleFakt="
            << c.mWidth * c.mHeight / static_cast<double>(c.mNewWidth * c.mNewHeight) << '\n';
    out << "sizeof(Tpixel)=" << c.mComponents << "\nWriting " << folder << "/tessel/" << c.mName
        << '\n';
    return out.str();
}

}  // namespace

TEST(Tessel, ShowsItsUsageWithoutArguments)
{
    const SRun run = RunTessel("");
    EXPECT_EQ(run.mOut,
              "tessel <options> <foldername>\n       options: -tsize <thumbsize>\n"
              "       Version " TESSEL_VERSION "\n");
    EXPECT_TRUE(run.mStatus == 0 && run.mErr.empty());
}

TEST(Tessel, MakesAGalleryToTheByte)
{
    const TempFolder folder;
    const SCase rows[] = {
        {"land.jpg", 300, 200, 3, 60, 40}, {"TALL.JPG", 200, 300, 3, 40, 60},
        {"square.Jpg", 90, 90, 1, 60, 60}, {"pano.jpg", 2000, 20, 3, 60, 1},
        {"cut.jpg", 200, 106, 1, 60, 31},  {"small <&>\".jpg", 20, 10, 3, 60, 30}};
    std::map<std::string, std::string> tree, outputs;
    for (const SCase& row : rows) {
        const std::string jpeg = SampleJpeg(row.mWidth, row.mHeight, row.mComponents);
        WriteAll(folder / row.mName, jpeg);
        SetTime(folder / row.mName, 1000 + row.mWidth);
        tree[row.mName] = jpeg;
        tree[std::string("tessel/") + row.mName] = ThumbOf(jpeg, row);
        outputs[row.mName] = OutputFor(folder.mPath, row);
    }
    tree[kDbase] =
        "TALL.JPG\t1200\ncut.jpg\t1200\nland.jpg\t1300\npano.jpg\t3000\n"
        "small <&>\".jpg\t1020\nsquare.Jpg\t1090\n";
    std::string output;
    for (const std::string& name : Listing(folder.mPath))
        output += outputs[name];
    tree["index.html"] = Page(fs::path(folder.mPath).filename(), Listing(folder.mPath));
    for (const std::string& expected : {output, std::string()}) {  // the second run makes nothing
        const SRun run = RunTessel("-tsize 60 " + folder.mPath);
        EXPECT_EQ(run.mOut, expected);
        EXPECT_TRUE(run.mStatus == 0 && run.mErr.empty());
        EXPECT_TRUE(Tree(folder.mPath) == tree);
    }
}

TEST(Tessel, TakesSizeAndFolderFromTheCommandLine)
{
    const TempFolder folder;
    fs::create_directory(folder / "photos");
    WriteAll(folder / "photos/x.jpg", SampleJpeg(400, 200));
    const std::tuple<std::string, std::string, unsigned> rows[] = {
        {"", "photos", 192},
        {"-tsize 100 ", "photos", 100},
        {"-tsize 120px ", "photos/.", 120},
        {"-tsize 100 -tsize 64 ", "photos/", 64},
        {"elsewhere ", "photos", 192},
        {"-x -TSIZE 80 -tsize=80 ", "./photos", 192},
        {"-tsize big ", "photos", 192},
        {"-tsize 0 ", "photos", 192},
        {"-tsize -5 ", "photos", 192},
        {"-tsize -tsize 50 ", "photos", 50}};
    for (const auto& [options, given, width] : rows) {
        const SRun run = RunTessel(options + given, folder.mPath);
        const Bytes thumb = DecodeJpeg(ReadAll(folder / "photos/tessel/x.jpg"));
        EXPECT_EQ(thumb.size(), width * (width / 2) * 3) << options;
        EXPECT_EQ(ReadAll(folder / "photos/index.html"),
                  Page(given.substr(given.rfind('/') + 1), {"x.jpg"}));
        EXPECT_EQ(run.mOut.find("Reading " + given + "/x.jpg\n"), 0U);
        fs::remove_all(folder / "photos/tessel");
    }
    const auto before = Tree(folder.mPath);
    for (const char* arguments : {"photos missing", "photos -tsize", "-tsize 100"}) {
        const SRun run = RunTessel(arguments, folder.mPath);
        EXPECT_TRUE(run.mStatus == 0 && run.mOut.empty() && run.mErr.empty());
    }
    EXPECT_EQ(Tree(folder.mPath), before);
}

TEST(Tessel, ThumbnailsKeepProportions)
{
    const TempFolder folder;
    const std::array<int, 5> rows[] = {
        {3000, 2000, 192, 192, 128}, {2000, 3000, 192, 128, 192}, {1600, 1200, 192, 192, 144},
        {1920, 1080, 192, 192, 108}, {100, 53, 100, 100, 52},     {200, 106, 100, 100, 52},
        {300, 159, 100, 100, 52},    {50, 40, 192, 192, 153},     {10000, 50, 192, 192, 1},
        {50, 10000, 192, 1, 192},    {201, 200, 100, 100, 99},    {1, 1, 1000, 1000, 1000}};
    const std::string source = folder / "x.jpg", target = folder / "y.jpg";
    for (const auto& [width, height, size, newWidth, newHeight] : rows) {
        const Bytes grey(static_cast<std::size_t>(width * height), 128);
        WriteAll(source, EncodeJpeg(width, height, 1, grey));
        OutputOf([&, s = size] { CTessel().MakeThumb(source.c_str(), target.c_str(), s); });
        const Bytes flat(static_cast<std::size_t>(newWidth * newHeight) * 3, 128);
        EXPECT_EQ(ReadAll(target), EncodeJpeg(newWidth, newHeight, 3, flat))
            << width << 'x' << height << " at " << size;
    }
}

TEST(Tessel, RemakesWhatIsNewOrLater)
{
    const TempFolder folder;
    const auto addPicture = [&folder](const char* name, long time) {
        WriteAll(folder / name, SampleJpeg(30, 20));
        SetTime(folder / name, time);
    };
    const auto made = [&folder] {  // the first letters of the thumbnails made
        const std::string out = RunTessel(folder.mPath).mOut;
        std::string letters;
        for (std::size_t at = 0; (at = out.find("/tessel/", at)) != std::string::npos; ++at)
            letters += out[at + 8];
        return letters;
    };
    addPicture("b.jpg", 1000000);
    addPicture("a.jpg", 1000000);
    EXPECT_EQ(made().size(), 2U);
    EXPECT_EQ(ReadAll(folder / kDbase), "a.jpg\t1000000\nb.jpg\t1000000\n");
    SetTime(folder / "b.jpg", 1000001);
    EXPECT_EQ(made() + made(), "b");
    SetTime(folder / "a.jpg", 5);  // set back: keeps its thumbnail and its record
    fs::remove(folder / "b.jpg");  // gone: keeps its record
    EXPECT_EQ(made(), "");
    EXPECT_EQ(ReadAll(folder / kDbase), "a.jpg\t1000000\nb.jpg\t1000001\n");
    for (const long time : {-100000L, 1L << 33}) {  // before 1970, after 2106
        addPicture("c.jpg", time);
        EXPECT_EQ(made() + made(), "c");
    }
    fs::remove(folder / kDbase);
    EXPECT_EQ(made().size(), 2U);
}

TEST(Tessel, ReadsAndHealsDatabases)
{
    const TempFolder folder;
    const std::string path = folder / "base";
    const std::pair<std::string, const char*> rows[] = {
        {"b.jpg\t2\r\na.jpg\t1\r\n", "a.jpg\t1\nb.jpg\t2\n"},
        {"a.jpg\t1\na.jpg\t2\n", "a.jpg\t1\n"},
        {"x.jpg\t1234567890\tmore\tfields\n", "x.jpg\t1234567890\n"},
        {"\nno tab\n\t7\nx.jpg\t1\n", "\t7\nx.jpg\t1\n"},
        {"x.jpg\tsoon\ny.jpg\t\n", "x.jpg\t0\ny.jpg\t0\n"},
        {"a.jpg\t-5\nb.jpg\t8589934592\n", "a.jpg\t-5\nb.jpg\t8589934592\n"},
        {"a.jpg\t1\nb.jpg\t12345", "a.jpg\t1\n"},
        {"a\t" + std::string(400, '9') + "\n", "a\t0\n"},
        {"", ""}};
    for (const auto& [content, written] : rows) {
        WriteAll(path, content);
        CTessel tessel;
        tessel.ReadDbase(path.c_str());
        tessel.WriteDbase(path.c_str());
        EXPECT_EQ(ReadAll(path), written) << content;
    }
    CTessel tessel;
    for (const char* name : {"tab\t.jpg", "feed\n.jpg", "return\r.jpg", "z.jpg"})
        tessel.mFileInfoSet.insert({name, 3});
    tessel.ReadDbase(folder.mPath.c_str());
    tessel.ReadDbase((folder / "missing").c_str());
    tessel.WriteDbase(path.c_str());
    EXPECT_EQ(ReadAll(path), "z.jpg\t3\n");
}

TEST(Tessel, GoesOnPastWhatFails)
{
    const TempFolder folder;
    const std::string whole = SampleJpeg(30, 20);
    const std::map<std::string, std::string> contents = {
        {"a.jpg", whole},       {"text.jpg", "not a picture"},
        {"blocked.jpg", whole}, {"empty.jpg", ""},
        {"m.jpg", whole},       {"cut.jpg", whole.substr(0, 30)},
        {"z.jpg", whole}};
    for (const auto& [name, content] : contents)
        WriteAll(folder / name, content);
    fs::create_directory(folder / "folder.jpg");
    fs::create_symlink("nowhere", folder / "dangling.jpg");
    fs::create_directories(folder / "tessel/blocked.jpg");
    const SRun run = RunTessel(folder.mPath);
    EXPECT_EQ(run.mStatus, 0);
    for (const std::string& name : Listing(folder.mPath)) {
        const bool good = name.size() == 5;
        EXPECT_EQ(fs::is_regular_file(folder / ("tessel/" + name)), good) << name;
        EXPECT_NE(run.mOut.find("Reading " + folder / name + "\n"), std::string::npos) << name;
        EXPECT_EQ(ReadAll(folder / kDbase).find(name + "\t") == std::string::npos,
                  name == "dangling.jpg");
    }
    EXPECT_EQ(ReadAll(folder / "index.html"),
              Page(fs::path(folder.mPath).filename(), Listing(folder.mPath)));
}

TEST(Tessel, WhatIsInTheWayCostsOnlyItself)
{
    using Names = std::vector<std::string>;
    const std::pair<std::string, Names> rows[] = {{"index.html", {"a.jpg", "tessel/a.jpg", kDbase}},
                                                  {kDbase, {"a.jpg", "index.html", "tessel/a.jpg"}},
                                                  {"tessel", {"a.jpg", "index.html", "tessel"}}};
    for (const auto& [obstacle, expected] : rows) {
        const TempFolder folder;
        WriteAll(folder / "a.jpg", SampleJpeg(30, 20));
        if (obstacle == "tessel")
            WriteAll(folder / obstacle, "a file");
        else
            fs::create_directories(folder / obstacle);
        EXPECT_EQ(RunTessel(folder.mPath).mStatus, 0);
        Names names;
        for (const auto& file : Tree(folder.mPath))
            names.push_back(file.first);
        EXPECT_EQ(names, expected);
    }
}

TEST(Tessel, PagesHaveFiveCellsToARow)
{
    for (const int count : {0, 1, 4, 5, 6, 10, 13}) {
        const TempFolder folder;
        for (int i = 0; i < count; ++i)
            WriteAll(folder / (std::to_string(i) + ".jpg"), "");
        WriteAll(folder / "not.jpeg", "");
        RunTessel(".", folder.mPath);
        EXPECT_EQ(ReadAll(folder / "index.html"), Page(".", Listing(folder.mPath))) << count;
        EXPECT_TRUE(fs::exists(folder / kDbase));
    }
}
