#include "host/page.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using host::Align;
using host::Mark;
using host::Page;

TEST(Page, AlignsColumnsBelowTheirHeadings) {
  Page page(80, false);
  page.Title("Fans");
  page.Table({{"#", Align::kRight}, {"Name"}, {"Speed", Align::kRight}},
             {{Mark::kNone, {"9", "left", "10 rpm"}},
              {Mark::kWarning,
               {"10",
                "r\xC3\xA9"
                "ar",
                "9 rpm"}}});
  EXPECT_EQ(page.Take(),
            "Fans\n"
            "   #  Name   Speed\n"
            "   9  left  10 rpm\n"
            "! 10  r\xC3\xA9"
            "ar   9 rpm\n");
}

TEST(Page, LeavesOutHeadingsThatAreAllEmpty) {
  Page page(80, false);
  page.Table({{""}, {""}}, {{Mark::kNone, {"a", "b"}}});
  EXPECT_EQ(page.Take(), "  a  b\n");
}

TEST(Page, PartsBlocksByABlankLineButNotATitleFromItsBlock) {
  Page page(80, false);
  page.Title("One");
  page.Gap();
  page.Line("text");
  page.Gap();
  page.Line("text");
  page.Title("Two");
  EXPECT_EQ(page.Take(), "One\n  text\n\n  text\n\nTwo\n");
}

TEST(Page, WrapsTheLastColumn) {
  Page page(80, false);
  const std::string words = "seven words of text that go on and on and over the edge of the page";
  page.Table({{""}, {""}}, {{Mark::kCritical, {std::string(20, 'a'), words}}});
  EXPECT_EQ(page.Take(),
            "! aaaaaaaaaaaaaaaaaaaa  seven words of text that go on and on and over the edge\n"
            "                        of the page\n");
}

// Units used to stand on the line below their numbers.
TEST(Page, BreaksNoLineAtATie) {
  Page page(80, false);
  page.Table({{""}, {""}}, {{Mark::kNone, {"a", std::string(69, 'w') + " 1\u00A0lx\u00A0"}}});
  EXPECT_EQ(page.Take(), "  a  " + std::string(69, 'w') + " 1 lx\n");
  page.Table({{""}, {""}}, {{Mark::kNone, {"a", std::string(72, 'w') + " 1\u00A0lx"}}});
  EXPECT_EQ(page.Take(), "  a  " + std::string(72, 'w') + "\n     1 lx\n");
}

TEST(Page, BreaksAWordThatFitsNoLine) {
  Page page(80, false);
  page.Table({{""}, {""}}, {{Mark::kNone, {"a", std::string(100, 'w')}}});
  EXPECT_EQ(page.Take(), "  a  " + std::string(75, 'w') + "\n     " + std::string(25, 'w') + "\n");
}

// It used to be broken within a name.
TEST(Page, BreaksAPathAfterASlash) {
  Page page(40, false);
  page.Table({{""}, {""}}, {{Mark::kNone, {"a", "Outputs[0]/DisplayInterfaces[0]/Sensors[12]"}}});
  EXPECT_EQ(page.Take(), "  a  Outputs[0]/DisplayInterfaces[0]/\n     Sensors[12]\n");
}

// Its end used to be cut off.
TEST(Page, WrapsATitle) {
  Page page(40, true);
  page.Title("Temperatures and voltages behind the control board");
  EXPECT_EQ(page.Take(),
            "\x1b[1mTemperatures and voltages behind the\x1b[0m\n\x1b[1mcontrol board\x1b[0m\n");
}

// Its end used to be cut off.
TEST(Page, WrapsTheWidestOfTheOtherColumns) {
  Page page(80, false);
  page.Table({{""}, {""}, {""}},
             {{Mark::kNone, {"ab", std::string(90, 'w'), std::string(20, 'l')}}});
  EXPECT_EQ(page.Take(), "  ab  " + std::string(52, 'w') + "  " + std::string(20, 'l') +
                             "\n      " + std::string(38, 'w') + "\n");
}

TEST(Page, StylesTitlesHeadingsAndMarkedLinesInColour) {
  Page page(80, true);
  page.Title("T");
  page.Table({{"H"}}, {{Mark::kCritical, {"bad"}}, {Mark::kNone, {"good"}}});
  EXPECT_EQ(page.Take(), "\x1b[1mT\x1b[0m\n\x1b[2m  H\x1b[0m\n\x1b[1;31m! bad\x1b[0m\n  good\n");
}

TEST(Page, UsesTheColumnsThatItHas) {
  const std::string words = "seven words of text that go on and on and over the edge of the page";
  Page wide(120, false);
  wide.Table({{""}, {""}}, {{Mark::kNone, {std::string(20, 'a'), words}}});
  EXPECT_EQ(wide.Take(), "  aaaaaaaaaaaaaaaaaaaa  " + words + "\n");
  Page narrow(48, false);
  narrow.Table({{""}, {""}}, {{Mark::kNone, {std::string(20, 'a'), words}}});
  EXPECT_EQ(narrow.Take(),
            "  aaaaaaaaaaaaaaaaaaaa  seven words of text that\n"
            "                        go on and on and over\n"
            "                        the edge of the page\n");
}

TEST(Page, WrapsAnotherColumnWhenAsked) {
  Page page(40, false);
  page.Table({{""}, {""}, {""}},
             {{Mark::kUnknown, {"a", "words that go on over more lines", "path/of/it"}}}, 1);
  EXPECT_EQ(page.Take(),
            "! a  words that go on over    path/of/it\n"
            "     more lines\n");
}

TEST(Page, HasAStyleForEachMark) {
  Page page(80, true);
  page.Headline(Mark::kUnknown, "unknown: 1 unknown");
  page.Plain("3 rows");
  page.Table({{""}}, {{Mark::kWarning, {"w"}}, {Mark::kUnknown, {"u"}}, {Mark::kCritical, {"c"}}});
  EXPECT_EQ(page.Take(),
            "\x1b[1;35munknown: 1 unknown\x1b[0m\n3 rows\n"
            "\x1b[1;33m! w\x1b[0m\n\x1b[1;35m! u\x1b[0m\n\x1b[1;31m! c\x1b[0m\n");
}

// A page that is narrower than its columns and gaps would have wrapped the width below zero.
TEST(Page, StaysAPageWhenItIsTooNarrow) {
  Page page(4, false);
  page.Table({{"a"}, {"b"}, {"c"}}, {{Mark::kNone, {"1", "2", "3"}}});
  EXPECT_FALSE(page.Take().empty());
}

}  // namespace
