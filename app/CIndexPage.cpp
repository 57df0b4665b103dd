#include "app/CIndexPage.h"

#include <ostream>
#include <string_view>

#include "app/GalleryLayout.h"
#include "app/OutputFile.h"

CIndexPage::CIndexPage(const std::string& path)
{
    if (MakeWay(path.c_str()))
        mStream.open(path);
}

void CIndexPage::WriteHead(const std::string& heading)
{
    mStream << "<html><body>\n" << std::endl;
    mStream << "<center>\n";
    mStream << "<h2>" << heading << "</h2>\n";
    mStream << "<table>\n";
}

void CIndexPage::AddPicture(const std::string& name)
{
    if (mCells == 0)
        mStream << "<tr>\n";
    mCell.clear();
    const std::string_view parts[] = {
        "  <td><a href=\"",         name, "\"><img src=\"", kThumbFolder, "/", name,
        "\"></a><br><font size=2>", name, "</font></td>\n"};
    for (const std::string_view part : parts)
        mCell += part;
    mStream << mCell;
    if (++mCells == kCellsPerRow) {
        mStream << "</tr>\n";
        mCells = 0;
    }
}

void CIndexPage::WriteTail()
{
    if (mCells != 0)
        mStream << "</tr>\n";
    mStream << "</table>\n";
    mStream << "</body></html>\n" << std::endl;
}
