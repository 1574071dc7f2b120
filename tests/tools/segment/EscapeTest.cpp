#include "Escape.hpp"

#include <gtest/gtest.h>

using namespace SegmentTool;

TEST(Escape, ControlCharactersDoNotReachATerminal)
{
    EXPECT_EQ("a b\xc3\xa4", EscapeText("a b\xc3\xa4"));
    EXPECT_EQ("\\x1b[2J\\x0a\\x7f", EscapeText("\x1b[2J\n\x7f"));
    EXPECT_EQ("\xff", EscapeText("\xff")) << "a name's other bytes stay";
}

TEST(Escape, CsvFieldsAreQuotedWhereTheyMustBe)
{
    EXPECT_EQ("plain name.bmp", CsvField("plain name.bmp"));
    EXPECT_EQ("", CsvField(""));
    EXPECT_EQ("\"a,b\"", CsvField("a,b"));
    EXPECT_EQ("\"say \"\"a\"\"\"", CsvField("say \"a\""));
    EXPECT_EQ("\"a\nb\"", CsvField("a\nb"));
    EXPECT_EQ("\"a\rb\"", CsvField("a\rb"));
    EXPECT_EQ("\xff\xfe", CsvField("\xff\xfe"));
}

TEST(Escape, HtmlHasNoMarkupAndNoBrokenCharacters)
{
    EXPECT_EQ("&lt;img src=&quot;x&quot; onerror=&#39;y&#39;&gt; &amp;", EscapeHtml("<img src=\"x\" onerror='y'> &"));
    EXPECT_EQ("a\xef\xbf\xbd"
              "b",
              EscapeHtml("a\xff"
                         "b"));
    EXPECT_EQ("\xef\xbf\xbd", EscapeHtml("\n"));
}

TEST(Escape, ValidUtf8StaysAndEveryOtherByteIsReplaced)
{
    const std::string sMark = "\xef\xbf\xbd";
    for (const char* szValid :
         {"", "plain", "\xc3\xa4", "\xe2\x82\xac", "\xf0\x9f\x91\x8d", "\xed\x9f\xbf", "\xf4\x8f\xbf\xbf"})
    {
        EXPECT_EQ(szValid, ValidUtf8(szValid));
    }
    EXPECT_EQ(sMark, ValidUtf8("\x80")) << "a continuation alone";
    EXPECT_EQ(sMark + sMark, ValidUtf8("\xc0\xaf")) << "longer than it need be";
    EXPECT_EQ(sMark + sMark + sMark, ValidUtf8("\xe0\x9f\xbf"));
    EXPECT_EQ(sMark + sMark + sMark, ValidUtf8("\xed\xa0\x80")) << "half of a pair";
    EXPECT_EQ(sMark + sMark + sMark + sMark, ValidUtf8("\xf4\x90\x80\x80")) << "beyond the last character";
    EXPECT_EQ("a" + sMark, ValidUtf8("a\xe2")) << "cut off";
    EXPECT_EQ(sMark + sMark + "b", ValidUtf8("\xe2\x82"
                                             "b"));
}
