#include "tree/Escape.h"

#include "tests/support/TestSupport.h"

TEST(Escape, EveryByteIsSafeInPagesLinksAndOnTerminals)
{
    // A text, and how it gets into a page, into a link and onto a terminal.
    using Text = std::string;
    const std::tuple<const char*, Text, Text, Text, Text> rows[] = {
        {"plain", "a-Z_0.~/b", "a-Z_0.~/b", "a-Z_0.~/b", "a-Z_0.~/b"},
        {"markup", "<b a='\">&", "&lt;b a=&#39;&quot;&gt;&amp;", "%3Cb%20a%3D%27%22%3E%26",
         "<b a='\">&"},
        {"parts of an address", "x:y?z#%41", "x:y?z#%41", "x%3Ay%3Fz%23%2541", "x:y?z#%41"},
        {"controls", "\n\t\033[\x7f", "???[?", "%0A%09%1B%5B%7F", "???[?"},
        {"last controls of C1", "\u0080\u009f\u00a0", "??\u00a0", "%C2%80%C2%9F%C2%A0", "??\u00a0"},
        {"two to four bytes", "é€\U0001f600", "é€\U0001f600", "%C3%A9%E2%82%AC%F0%9F%98%80",
         "é€\U0001f600"},
        {"largest code", "\U0010ffff", "\U0010ffff", "%F4%8F%BF%BF", "\U0010ffff"},
        {"Latin-1", "caf\xe9.jpg", "caf\ufffd.jpg", "caf%E9.jpg", "caf\xe9.jpg"},
        {"cut character", "\xe2\x82", "\ufffd\ufffd", "%E2%82", "\xe2\x82"},
        {"cut before markup", "\xe2\x82<", "\ufffd\ufffd&lt;", "%E2%82%3C", "\xe2\x82<"},
        {"overlong slash", "\xc0\xaf", "\ufffd\ufffd", "%C0%AF", "\xc0\xaf"},
        {"overlong escape", "\xe0\x80\x9b", "\ufffd\ufffd\ufffd", "%E0%80%9B", "\xe0\x80\x9b"},
        {"half a pair", "\xed\xa0\x80", "\ufffd\ufffd\ufffd", "%ED%A0%80", "\xed\xa0\x80"},
        {"above Unicode", "\xf4\x90\x80\x80", "\ufffd\ufffd\ufffd\ufffd", "%F4%90%80%80",
         "\xf4\x90\x80\x80"},
        {"no first byte", "\xf8\xff", "\ufffd\ufffd", "%F8%FF", "\xf8\xff"}};
    for (const auto& [name, text, html, link, terminal] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(EscapeText(text), html);
        EXPECT_EQ(EscapeLink(text), link);
        EXPECT_EQ(Printable(text), terminal);
    }
}
