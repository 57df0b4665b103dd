#include "tree/PageFrame.h"

#include "tree/Escape.h"

namespace {

/// A cell is as wide as a thumbnail, but two of them always find room beside each other, and a name
/// is readable below the smallest. Thumbnails stand in squares, so that nothing moves when they
/// arrive; they are never enlarged. The link covers its whole cell.
constexpr const char* kStyle = R"(
:root { color-scheme: light dark; --page: #fff; --cell: #f2f2f2; --note: #666 }
@media (prefers-color-scheme: dark) { :root { --page: #151515; --cell: #242424; --note: #aaa } }
body { margin: 0; padding: 1rem; background: var(--page); font: 1rem/1.4 system-ui, sans-serif }
h1 { margin: 0; font-size: 1.5rem; overflow-wrap: anywhere }
p { margin: 0 0 1rem }
ul { display: grid; gap: .75rem; margin: 0; padding: 0; list-style: none; grid-template-columns:
  repeat(auto-fill, minmax(min(max(var(--thumb), 7rem) + 1rem, 50% - .375rem), 1fr)) }
li { position: relative; box-sizing: border-box; padding: .5rem; border-radius: .5rem;
  background: var(--cell); overflow-wrap: anywhere; text-align: center; font-size: .875rem }
li a { display: grid; place-items: center; aspect-ratio: 1; max-width: max(var(--thumb), 7rem);
  margin: 0 auto .25rem }
li a::after { content: ""; position: absolute; inset: 0 }
li:hover, li:focus-within { outline: 2px solid var(--note) }
img { width: 100%; aspect-ratio: 1; object-fit: scale-down }
p, small { color: var(--note) }
small { display: block }
)";

std::string Head(const SPage& page)
{
    return "<!DOCTYPE html>\n"
           "<html lang=\"en\">\n"
           "<head>\n"
           "<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<title>" +
           EscapeText(page.mHeading) +
           "</title>\n<style>\n:root { --thumb: " + std::to_string(page.mThumbSize) + "px }" +
           kStyle +
           "</style>\n"
           "</head>\n";
}

std::string Header(const SPage& page)
{
    std::string header = "<header>\n";
    if (!page.mBack.empty())
        header += "<nav><a href=\"" + EscapeLink(page.mBack) + "\">All galleries</a></nav>\n";
    return header + "<h1>" + EscapeText(page.mHeading) + "</h1>\n<p>" + EscapeText(page.mNote) +
           "</p>\n</header>\n";
}

std::string Cell(const SPageCell& cell)
{
    const std::string caption = EscapeText(cell.mCaption);
    std::string text = "<li><a href=\"" + EscapeLink(cell.mTarget) + "\">";
    if (cell.mImage.empty())
        text += caption + "</a>";
    else
        text += "<img src=\"" + EscapeLink(cell.mImage) + "\" alt=\"" + caption +
                "\" loading=\"lazy\"></a>" + caption;
    if (!cell.mNote.empty())
        text += "<small>" + EscapeText(cell.mNote) + "</small>";
    return text + "</li>\n";
}

}  // namespace

std::string MakePage(const SPage& page)
{
    std::string text = Head(page) + "<body>\n" + Header(page) + "<main>\n<ul>\n";
    for (const SPageCell& cell : page.mCells)
        text += Cell(cell);
    return text + "</ul>\n</main>\n</body>\n</html>\n";
}

std::string CountOf(long count, const std::string& one, const std::string& many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}
