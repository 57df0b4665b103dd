#include "app/CIndexPage.h"

#include <string_view>

#include "app/GalleryLayout.h"

std::string CIndexPage::Head(const std::string& heading) const
{
    return "<html><body>\n\n<center>\n<h2>" + heading + "</h2>\n<table>\n";
}

std::string CIndexPage::Cell(const std::string& name)
{
    std::string text = mCells == 0 ? "<tr>\n" : "";
    const std::string_view parts[] = {
        "  <td><a href=\"",         name, "\"><img src=\"", kThumbFolder, "/", name,
        "\"></a><br><font size=2>", name, "</font></td>\n"};
    for (const std::string_view part : parts)
        text += part;
    if (++mCells == kCellsPerRow) {
        text += "</tr>\n";
        mCells = 0;
    }
    return text;
}

std::string CIndexPage::Tail() const
{
    return std::string(mCells == 0 ? "" : "</tr>\n") + "</table>\n</body></html>\n\n";
}
