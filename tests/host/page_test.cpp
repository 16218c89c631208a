#include "host/page.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using host::Align;
using host::Page;

TEST(Page, AlignsColumnsBelowTheirHeadings) {
  Page page(false);
  page.Title("Fans");
  page.Table({{"#", Align::kRight}, {"Name"}, {"Speed", Align::kRight}},
             {{false, {"9", "left", "10 rpm"}},
              {true,
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
  Page page(false);
  page.Table({{""}, {""}}, {{false, {"a", "b"}}});
  EXPECT_EQ(page.Take(), "  a  b\n");
}

TEST(Page, PartsBlocksByABlankLineButNotATitleFromItsBlock) {
  Page page(false);
  page.Title("One");
  page.Gap();
  page.Line("text");
  page.Gap();
  page.Line("text");
  page.Title("Two");
  EXPECT_EQ(page.Take(), "One\n  text\n\n  text\n\nTwo\n");
}

TEST(Page, WrapsTheLastColumn) {
  Page page(false);
  const std::string words = "seven words of text that go on and on and over the edge of the page";
  page.Table({{""}, {""}}, {{true, {std::string(20, 'a'), words}}});
  EXPECT_EQ(page.Take(),
            "! aaaaaaaaaaaaaaaaaaaa  seven words of text that go on and on and over the edge\n"
            "                        of the page\n");
}

// Units used to stand on the line below their numbers.
TEST(Page, BreaksNoLineAtATie) {
  Page page(false);
  page.Table({{""}, {""}}, {{false, {"a", std::string(69, 'w') + " 1\u00A0lx\u00A0"}}});
  EXPECT_EQ(page.Take(), "  a  " + std::string(69, 'w') + " 1 lx\n");
  page.Table({{""}, {""}}, {{false, {"a", std::string(72, 'w') + " 1\u00A0lx"}}});
  EXPECT_EQ(page.Take(), "  a  " + std::string(72, 'w') + "\n     1 lx\n");
}

TEST(Page, BreaksAWordThatFitsNoLine) {
  Page page(false);
  page.Table({{""}, {""}}, {{false, {"a", std::string(100, 'w')}}});
  EXPECT_EQ(page.Take(), "  a  " + std::string(75, 'w') + "\n     " + std::string(25, 'w') + "\n");
}

TEST(Page, CutsTheWidestOfTheOtherColumns) {
  Page page(false);
  page.Table({{""}, {""}, {""}}, {{false, {"ab", std::string(90, 'w'), std::string(20, 'l')}}});
  EXPECT_EQ(page.Take(),
            "  ab  " + std::string(51, 'w') + "\xE2\x80\xA6  " + std::string(20, 'l') + "\n");
}

TEST(Page, StylesTitlesHeadingsAndMarkedLinesInColour) {
  Page page(true);
  page.Title("T");
  page.Table({{"H"}}, {{true, {"bad"}}, {false, {"good"}}});
  EXPECT_EQ(page.Take(), "\x1b[1mT\x1b[0m\n\x1b[2m  H\x1b[0m\n\x1b[1;31m! bad\x1b[0m\n  good\n");
}

}  // namespace
