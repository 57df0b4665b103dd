#ifndef TESSEL_APP_CINDEXPAGE_H
#define TESSEL_APP_CINDEXPAGE_H

#include <string>

/// The text of the index page: a heading and a table of linked thumbnails, in a format that no
/// other class knows. Names and heading stand in it as they are, without escapes.
///
/// The page consists of one head, a cell for each picture, and one tail, in this order. One object
/// makes one page and is used by one thread.
class CIndexPage
{
public:
    std::string Head(const std::string& heading) const;
    /// The cell of the next picture, with the beginning or the end of a row where one is due.
    std::string Cell(const std::string& name);
    std::string Tail() const;

private:
    int mCells = 0;  // in the open row
};

#endif
