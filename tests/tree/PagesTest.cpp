#include "tests/support/TestSupport.h"
#include "tree/AlbumPage.h"
#include "tree/GalleriesPage.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

/// The lines of a page's list.
std::string CellsOf(const std::string& page)
{
    const std::size_t first = page.find("<li>");
    return page.substr(first, page.find("</ul>") - first);
}

Names NamesInOrder(std::vector<SAlbumPicture> pictures, bool byTime)
{
    SortPictures(pictures, byTime);
    Names names;
    for (const SAlbumPicture& picture : pictures)
        names.push_back(picture.mName);
    return names;
}

}  // namespace

TEST(AlbumPage, ShowsPicturesInTheOrderGivenAndNoNameBreaksIt)
{
    const std::vector<SAlbumPicture> pictures = {{"\"<:\xe9", 0, true}, {"a.jpg", 0, false}};
    const std::string page = MakeAlbumPage("<h>", pictures, "../<up>/galleries.html", 80);
    EXPECT_EQ(CellsOf(page),
              R"(<li><a href="%22%3C%3A%E9"><img src="tessel/%22%3C%3A%E9" alt="&quot;&lt;:)"
              "\ufffd"
              R"(" loading="lazy"></a>&quot;&lt;:)"
              "\ufffd</li>\n"
              "<li><a href=\"a.jpg\">a.jpg</a></li>\n");
    EXPECT_THAT(page, HasSubstr("<title>&lt;h&gt;</title>"));
    EXPECT_THAT(page, HasSubstr("<h1>&lt;h&gt;</h1>"));
    EXPECT_THAT(page, HasSubstr(R"(<nav><a href="../%3Cup%3E/galleries.html">)"));
    EXPECT_THAT(page, HasSubstr("<p>2 pictures</p>"));
    EXPECT_THAT(page, HasSubstr("--thumb: 80px"));
}

TEST(AlbumPage, SortsByNameOrByTimeThenName)
{
    const std::vector<SAlbumPicture> pictures = {
        {"b10.jpg", 5}, {"b9.jpg", 5}, {"c.jpg", -1}, {"a.jpg", 6}};
    EXPECT_THAT(NamesInOrder(pictures, false), ElementsAre("a.jpg", "b9.jpg", "b10.jpg", "c.jpg"));
    EXPECT_THAT(NamesInOrder(pictures, true), ElementsAre("c.jpg", "b9.jpg", "b10.jpg", "a.jpg"));
}

TEST(GalleriesPage, ShowsGalleriesWithPicturesInTheOrderOfTheirPaths)
{
    const std::vector<SGalleryEntry> galleries = {
        {"10", 1, "x"}, {"2/b", 2, ""}, {"empty", 0, ""}, {"2", 3, "<"}, {"", 4, "y"}};
    const std::string page = MakeGalleriesPage("A&B", galleries, 80);
    EXPECT_EQ(
        CellsOf(page),
        R"(<li><a href="gallery.html"><img src="tessel/y" alt="A&amp;B" loading="lazy"></a>A&amp;B<small>4 pictures</small></li>
<li><a href="2/gallery.html"><img src="2/tessel/%3C" alt="2" loading="lazy"></a>2<small>3 pictures</small></li>
<li><a href="2/b/gallery.html">2/b</a><small>2 pictures</small></li>
<li><a href="10/gallery.html"><img src="10/tessel/x" alt="10" loading="lazy"></a>10<small>1 picture</small></li>
)");
    EXPECT_THAT(page, HasSubstr("<h1>Galleries of A&amp;B</h1>"));
    EXPECT_THAT(page, HasSubstr("<p>4 galleries</p>"));
    EXPECT_THAT(page, HasSubstr("--thumb: 80px"));
    EXPECT_THAT(page, Not(HasSubstr("<nav>"))) << "there is no page above";
}
