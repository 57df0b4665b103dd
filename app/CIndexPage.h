#ifndef TESSEL_APP_CINDEXPAGE_H
#define TESSEL_APP_CINDEXPAGE_H

#include <fstream>
#include <string>

/// Writes the index page: a heading and a table of linked thumbnails, in a format that no
/// other class knows. Names and heading are written as they are, without escapes.
///
/// A page that can't be written is lost without a word. Call the functions in their order.
class CIndexPage
{
public:
    /// Creates the page in the place of an old one.
    explicit CIndexPage(const std::string& path);

    void WriteHead(const std::string& heading);
    /// Adds the cell of one picture, opening and closing the table's rows around it.
    void AddPicture(const std::string& name);
    void WriteTail();

private:
    std::ofstream mStream;
    int mCells = 0;     // in the open row
    std::string mCell;  // written at once, as a stream takes longer to begin than to write
};

#endif
