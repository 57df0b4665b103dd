// Folders that people have filled: every run ends normally, every good picture gets its thumbnail,
// and nothing but page, thumbnails and database changes.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <map>

#include "tests/TestSupport.h"

struct HostileFolder : FolderTest
{
    /// True when the shell's words can be run and succeed.
    static bool Works(const std::string& words)
    {
        return std::system(("(" + words + ") >/dev/null 2>&1").c_str()) == 0;
    }

    const fs::path mOutside = mFolder / "outside", mGallery = mFolder / "gallery";
    const fs::path mThumbs = mGallery / "tessel";
    const std::string mJpeg = SampleJpeg(300, 200);

    HostileFolder()
    {
        fs::create_directories(mThumbs);
        WriteAll(mOutside, "outside");
    }
    /// Runs a shell's words in the gallery, with a bound on time where the system has one: "failed"
    /// is then in the output.
    std::string Try(const std::string& words = TESSEL_PROGRAM " .") const
    {
        static const bool bounded = Works("command -v timeout");
        return Run((bounded ? "timeout -s KILL 300 " : "") + ("sh -c 'cd gallery; " + words + "'"));
    }
    bool HasThumb(const std::string& name) const
    {
        TestImage thumb;
        return thumb.GetSize((mThumbs / name).c_str(), 0, 0) && thumb.mWidth == 192;
    }
    static void MakeSocket(const std::string& path)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
        EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        close(listener);
    }
    std::map<std::string, std::string> Files() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(mGallery))
            if (entry.is_regular_file())
                files[entry.path().string()] = ReadAll(entry.path().string());
        return files;
    }
};

TEST_F(HostileFolder, EntriesOfAnyKindAndNameHoldNothingUp)
{
    const Names names{
        "a b.jpg",      "\"'.jpg",      "\t.jpg",   "\n.jpg",    "\r.jpg",
        "\x01\x7f.jpg", "%41.jpg",      "#?.jpg",   "<b>.jpg",   "-tsize.jpg",
        ".jpg",         "\xff\xfe.jpg", "&amp.jpg", "\\n$x.jpg", std::string(251, 'n') + ".jpg"};
    for (const std::string& name : names)
        WriteAll(mGallery / name, mJpeg);
    mkfifo((mGallery / "fifo.jpg").c_str(), 0600);
    fs::create_directory(mGallery / "folder.jpg");
    fs::create_symlink("circle.jpg", mGallery / "circle.jpg");
    fs::create_symlink("/dev/zero", mGallery / "endless.jpg");
    fs::create_symlink("nowhere", mGallery / "dangling.jpg");
    WriteAll(mGallery / "empty.jpg", "");
    fs::create_symlink("a b.jpg", mGallery / "linked.jpg");
    MakeSocket(mGallery / "socket.jpg");
    mkfifo((mThumbs / "tesselbase.txt").c_str(), 0600);
    EXPECT_EQ(Try().find("failed"), std::string::npos);
    for (const std::string& name : names)
        EXPECT_TRUE(HasThumb(name)) << name;
    EXPECT_TRUE(HasThumb("linked.jpg"));
    EXPECT_EQ(std::distance(fs::directory_iterator(mThumbs), {}),
              static_cast<std::ptrdiff_t>(names.size()) + 2);
}

TEST_F(HostileFolder, NothingButTheGallerysFilesIsWritten)
{
    WriteAll(mGallery / "wide.jpg", SampleJpeg(400, 2));
    fs::create_symlink("nowhere", mThumbs / "wide.jpg");
    Try(TESSEL_PROGRAM " -tsize 40000 .");  // there are no such thumbnails
    EXPECT_TRUE(fs::is_symlink(mThumbs / "wide.jpg"));
    fs::remove_all(mThumbs);
    fs::remove(mGallery / "index.html");
    fs::create_directory(mThumbs);

    for (const char* name : {"linked.jpg", "hard.jpg", "fifo.jpg", "socket.jpg"})
        WriteAll(mGallery / name, mJpeg);
    MakeSocket(mThumbs / "socket.jpg");
    fs::create_directory(mFolder / "drafts");
    fs::create_symlink(mFolder / "drafts", mThumbs / "tesselbase.txt.new");
    fs::create_symlink("../linked.jpg", mThumbs / "linked.jpg");
    fs::create_hard_link(mGallery / "hard.jpg", mThumbs / "hard.jpg");
    mkfifo((mThumbs / "fifo.jpg").c_str(), 0600);
    fs::create_symlink(mOutside, mGallery / "index.html");
    fs::create_symlink("/dev/zero", mThumbs / "tesselbase.txt");
    EXPECT_EQ(Try().find("failed"), std::string::npos);
    for (const char* name : {"linked.jpg", "hard.jpg", "fifo.jpg", "socket.jpg"})
        EXPECT_TRUE(HasThumb(name) && ReadAll(mGallery / name) == mJpeg) << name;
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(mGallery / "index.html")));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(mThumbs / "tesselbase.txt")));
    EXPECT_TRUE(ReadAll(mOutside) == "outside" && fs::is_empty(mFolder / "drafts"));
    EXPECT_FALSE(fs::exists(mThumbs / "tesselbase.txt.new"));
}

TEST_F(HostileFolder, OnlyALinkToAThumbnailFolderIsFollowed)
{
    const fs::path elsewhere = mFolder / "elsewhere";
    // What it leads to: a folder with a file of this name, one without any, nothing.
    const std::tuple<const char*, bool, bool> rows[] = {{"original.jpg", true, false},
                                                        {"tesselbase.txt", true, true},
                                                        {"", true, true},
                                                        {"", false, false}};
    WriteAll(mGallery / "original.jpg", mJpeg);
    for (const auto& [file, exists, followed] : rows) {
        fs::remove_all(mThumbs);
        fs::remove_all(elsewhere);
        if (exists)
            fs::create_directory(elsewhere);
        if (*file)
            WriteAll(elsewhere / file, "original");
        fs::create_symlink(elsewhere, mThumbs);
        const std::string first = Try(), second = Try();
        EXPECT_TRUE(fs::is_symlink(mThumbs) && fs::exists(elsewhere) == exists) << file;
        EXPECT_EQ(second, followed ? "" : first);
        EXPECT_TRUE(first.starts_with("Reading ./original.jpg\n"));
        EXPECT_TRUE(first.ends_with("Writing ./tessel/original.jpg\n"));
        EXPECT_TRUE(!followed || HasThumb("original.jpg")) << file;
        EXPECT_EQ(ReadAll(elsewhere / "tesselbase.txt").find("original.jpg\t") == 0, followed);
        EXPECT_TRUE(ReadAll(mGallery / "index.html").ends_with("</html>\n\n"));
        EXPECT_TRUE(followed || ReadAll(elsewhere / "original.jpg") == (*file ? "original" : ""));
    }
}

TEST_F(HostileFolder, OrdinaryFilesKeepModeAndOwner)
{
    const fs::path files[] = {mGallery / "index.html", mThumbs / "x.jpg",
                              mThumbs / "tesselbase.txt"};
    WriteAll(mGallery / "x.jpg", mJpeg);
    for (const fs::path& file : files) {
        WriteAll(file, "");
        chmod(file.c_str(), 0604);
        EXPECT_TRUE(geteuid() != 0 || chown(file.c_str(), 65534, 65533) == 0);
    }
    Try();
    for (const fs::path& file : files) {
        struct stat status = {};
        EXPECT_EQ(stat(file.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0604U) << file;
        EXPECT_TRUE(status.st_size > 0 && status.st_uid == (geteuid() == 0 ? 65534 : geteuid()));
    }
}

TEST_F(HostileFolder, APictureThatIsLeasedIsWaitedFor)
{
    static int leased = -1;
    WriteAll(mGallery / "x.jpg", mJpeg);
    leased = open((mGallery / "x.jpg").c_str(), O_RDWR | O_CLOEXEC);
    if (fcntl(leased, F_SETLEASE, F_WRLCK) != 0)
        GTEST_SKIP() << "no leases in this file system";
    std::signal(SIGIO, [](int) { fcntl(leased, F_SETLEASE, F_UNLCK); });
    EXPECT_EQ(Try().find("failed"), std::string::npos);
    EXPECT_NE(ReadAll(mThumbs / "tesselbase.txt"), "");
    std::signal(SIGIO, SIG_DFL);
    close(leased);
}

TEST_F(HostileFolder, ReadersThatGoAwayEndNothing)
{
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
        WriteAll(mGallery / name, mJpeg);
    WriteAll(mGallery / "cut.jpg", mJpeg.substr(0, 999));
    EXPECT_EQ(Try("(sleep 0.2; " TESSEL_PROGRAM " . 2>&1; echo $? >status) | true"), "");
    EXPECT_EQ(ReadAll(mGallery / "status"), "0\n");
    EXPECT_EQ(Try(), "");
    EXPECT_TRUE(HasThumb("a.jpg") && HasThumb("b.jpg") && HasThumb("c.jpg") && HasThumb("cut.jpg"));
}

TEST_F(HostileFolder, KilledAndDoubledRunsEndLikeOne)
{
    for (int i = 0; i < 20; ++i)
        WriteAll(mGallery / (std::to_string(i) + ".jpg"), mJpeg);
    const std::string base = mThumbs / "tesselbase.txt", gone = "gone.jpg\t7\n";
    WriteAll(base, gone);
    Try();
    const auto expected = Files();
    for (int i = 0; i < 40; ++i) {
        fs::remove_all(mThumbs);
        fs::create_directory(mThumbs);
        WriteAll(base, gone);
        const std::string delay = "0." + std::to_string(1000 + i * 13).substr(1);
        Try(i % 4 == 0 ? TESSEL_PROGRAM " . & " TESSEL_PROGRAM " .; wait"
                       : TESSEL_PROGRAM " . & sleep " + delay + "; kill -KILL $!; wait");
        Try();
        ASSERT_TRUE(Files() == expected) << delay;
    }
}

TEST_F(HostileFolder, RunsWithinSmallLimits)
{
    for (int i = 0; i < 50; ++i)
        WriteAll(mGallery / (std::to_string(i) + ".jpg"), mJpeg);
    Try();
    EXPECT_TRUE(HasThumb("0.jpg") && HasThumb("49.jpg"));
    const auto expected = Files();
    // Three descriptors are the standard ones, and the page takes up the next. Sanitizers and
    // emulators need more to start with.
    const std::string close = "exec 3>&- 4>&- 5>&- 6>&- 7>&- 8>&- 9>&-; ulimit -n ";
    if (Works(close + "4; exec " TESSEL_PROGRAM)) {
        EXPECT_TRUE(Try(close + "4; exec " TESSEL_PROGRAM " .").starts_with("Reading "));
        EXPECT_TRUE(Files() == expected);
        fs::remove_all(mThumbs);
        EXPECT_EQ(Try(close + "5; exec " TESSEL_PROGRAM " .").find("failed"), std::string::npos);
        EXPECT_TRUE(Files() == expected);
    }
    for (const char* closed : {">&-", "<&- >&- 2>&-"}) {
        fs::remove_all(mThumbs);
        EXPECT_EQ(Try(std::string("exec " TESSEL_PROGRAM " . ") + closed), "");
        EXPECT_TRUE(Files() == expected) << closed;
    }
    // Not every system has the limit, and sanitizers and emulators need more to start with.
    if (!Works("ulimit -v 60000 && " TESSEL_PROGRAM))
        return;
    WriteAll(mGallery / "large.jpg", EncodeJpeg(9000, 9000, 1, Bytes(81000000, 7), 80, true));
    const std::string output = Try("ulimit -v 60000; exec " TESSEL_PROGRAM " .");
    EXPECT_NE(output.find("Reading ./large.jpg\n"), std::string::npos);
    EXPECT_EQ(output.find("failed"), std::string::npos);
    EXPECT_FALSE(HasThumb("large.jpg"));
    WriteAll(mGallery / "grown.jpg", mJpeg);
    EXPECT_EQ(Try("ulimit -v 60000; exec " TESSEL_PROGRAM " -tsize 30000 .").find("failed"),
              std::string::npos);
    EXPECT_TRUE(!HasThumb("grown.jpg") && Try().empty());
}

TEST_F(HostileFolder, DatabasesOfAnythingAreReadAndHealed)
{
    std::string lines;
    for (int i = 0; i < 1000000; ++i)
        lines += std::to_string(i) + "\t1\n";
    const Bytes noise = Noise(1 << 20);
    const std::string rows[] = {{noise.begin(), noise.end()},
                                std::string(100000000, 'x'),
                                std::string(100000000, '\t') + '\n',
                                std::string(1 << 20, '\n'),
                                std::string(1 << 20, '\0') + "\n\0\t\0\n",
                                "x.jpg\t" + std::string(400, '9') + '\n',
                                lines};
    WriteAll(mGallery / "x.jpg", mJpeg);
    for (const std::string& content : rows) {
        fs::remove(mThumbs / "x.jpg");
        WriteAll(mThumbs / "tesselbase.txt", content);
        EXPECT_EQ(Try().find("failed"), std::string::npos);
        EXPECT_TRUE(HasThumb("x.jpg"));
        const std::string healed = ReadAll(mThumbs / "tesselbase.txt");
        EXPECT_EQ(Try() + ReadAll(mThumbs / "tesselbase.txt"), healed);
    }
}

TEST_F(HostileFolder, AHundredThousandEntriesAreDone)
{
    for (int i = 0; i < 100000; ++i)
        WriteAll(mGallery / (std::to_string(i) + ".jpg"), "");
    WriteAll(mGallery / "last.jpg", mJpeg);
    EXPECT_EQ(Try("ulimit -s 256; exec " TESSEL_PROGRAM " . 2>/dev/null").find("failed"),
              std::string::npos);
    EXPECT_TRUE(HasThumb("last.jpg"));
    EXPECT_TRUE(ReadAll(mGallery / "index.html").ends_with("</table>\n</body></html>\n\n"));
    const std::string dbase = ReadAll(mThumbs / "tesselbase.txt");
    EXPECT_EQ(std::count(dbase.begin(), dbase.end(), '\n'), 100001);
}

TEST_F(HostileFolder, BigButHonestPicturesAreDone)
{
    const std::tuple<int, int, bool> rows[] = {
        {65500, 200, false}, {20000, 14000, false}, {10000, 10000, true}};
    for (const auto& [width, height, progressive] : rows) {
        const Bytes pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 7);
        WriteAll(mGallery / "big.jpg", EncodeJpeg(width, height, 1, pixels, 80, progressive));
        fs::remove_all(mThumbs);
        EXPECT_EQ(Try().find("failed"), std::string::npos);
        EXPECT_TRUE(HasThumb("big.jpg")) << width;
    }
}

TEST_F(HostileFolder, AFolderThatCannotBeChangedIsLeftAsItIs)
{
    const std::string program = mFolder / "program", tessel = "setpriv --reuid=65534 " + program;
    fs::copy(TESSEL_PROGRAM_FILE, program);
    fs::permissions(mFolder, fs::perms(0755));
    if (geteuid() == 0 && !Works(tessel))
        GTEST_SKIP() << "the superuser, who may change everything, can't become somebody else";
    WriteAll(mGallery / "x.jpg", mJpeg);
    const auto before = Files();
    fs::permissions(mThumbs, fs::perms(0555));
    fs::permissions(mGallery, fs::perms(0555));
    const std::string command = (geteuid() == 0 ? tessel : program) + " .";
    const std::string output = Try(command);
    EXPECT_TRUE(output.starts_with("Reading ./x.jpg\n") && Files() == before) << output;
    EXPECT_EQ(output.find("failed"), std::string::npos);
    // But for its files that may be.
    const fs::path page = mGallery / "index.html", dbase = mThumbs / "tesselbase.txt";
    for (const fs::path& file : {page, dbase}) {
        WriteAll(file, "");
        fs::permissions(file, fs::perms(0666));
    }
    Try(command);
    EXPECT_TRUE(ReadAll(dbase).find("x.jpg\t") == 0 && ReadAll(page).size() > 100);
    WriteAll(page, "shared");
    fs::create_hard_link(page, mFolder / "shared");
    Try(command);
    EXPECT_EQ(ReadAll(page), "shared");
    // Nor is one that may be entered, and not listed.
    fs::remove(page);
    fs::permissions(mGallery, fs::perms(0333));
    EXPECT_EQ(Try(command), "");
    EXPECT_FALSE(fs::exists(page));
    fs::permissions(mGallery, fs::perms(0777));
    fs::permissions(mThumbs, fs::perms(0777));

    // Nor is a file of somebody else's that can't be written, or whose records can't be read.
    for (const int mode : {0444, 0222}) {
        for (const fs::path& file : {page, dbase}) {
            WriteAll(file, "old\t1\n");
            fs::permissions(file, fs::perms(mode));
        }
        Try(command);
        EXPECT_EQ(ReadAll(dbase), "old\t1\n") << mode;
        EXPECT_EQ(ReadAll(page) == "old\t1\n", mode == 0444);
        EXPECT_TRUE(HasThumb("x.jpg"));
        fs::remove(page);
        fs::remove(dbase);
    }
}

TEST_F(HostileFolder, AFullDiskEndsTheRunAndTheNextGoesOn)
{
    // A file can't outgrow the limit, which is an error like any other where the signal is ignored.
    const std::string full = "trap \"\" XFSZ; ulimit -f 8; exec " TESSEL_PROGRAM " -tsize 1000 .";
    WriteAll(mGallery / "noise.jpg", SampleJpeg(1000, 1000));
    const std::string output = Try(full);
    EXPECT_NE(output.find("failed"), std::string::npos) << output;
    EXPECT_NE(output.find("Errors: Output file write error --- out of disk space?\n"),
              std::string::npos)
        << output;
    EXPECT_EQ(Try().find("failed"), std::string::npos);
    EXPECT_TRUE(HasThumb("noise.jpg"));

    // Nor does a database that can't be written whole take the place of the old one.
    std::string records;
    for (int i = 10000; i < 12000; ++i)
        records += std::to_string(i) + ".jpg\t1\n";
    WriteAll(mThumbs / "tesselbase.txt", records + "noise.jpg\t99999999999\n");
    const auto before = Files();
    EXPECT_EQ(Try(full), "");
    EXPECT_TRUE(Files() == before && !fs::exists(mThumbs / "tesselbase.txt.new"));
}
