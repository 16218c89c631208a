#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>

#include "collector/state/scratch.h"
#include "model/xml.h"
#include "tests/handlers/handler_fixture.h"
#include "tests/support/comma_locale.h"

namespace {

using test_support::CommaLocale;

using Locale = HandlerTest;

TEST_F(Locale, WithACommaChangesNoNumberOfARow) {
  const CommaLocale comma;
  char shown[16];
  std::snprintf(shown, sizeof shown, "%.1f", 37.5);
  ASSERT_STREQ(shown, "37,5") << "the locale is not in force";

  Row(Status_DimmingLevel, "DimmingLevel", "37.5");
  Row(Status_ActualDimmingLevel, "ActualDimmingLevel", "12,5");
  Row(Status_TtablePixelPitch, "TtablePixelPitch", "6.35");
  Row(Status_TtableRefreshRate, "TtableRefreshRate", "59.94");
  Row(Status_TtableColumns, "TtableColumns", "1.234");
  EXPECT_EQ(Output().Dimming.DimmingLevel, 37.5F);
  EXPECT_EQ(Output().Dimming.ActualDimmingLevel, 12.0F);
  EXPECT_EQ(Output().Ttable.PixelPitch, 6.35F);
  EXPECT_EQ(Output().Ttable.RefreshRate, 59.94F);
  EXPECT_EQ(Output().Ttable.Columns, 1U);
}

TEST_F(Locale, WithACommaStaysTheHostsOwn) {
  const CommaLocale comma;
  const std::string before = std::setlocale(LC_ALL, nullptr);
  Row(Status_DimmingLevel, "DimmingLevel", "37.5");
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

TEST_F(Locale, WithACommaChangesNoNumberOfTheDocumentAsXml) {
  Row(Status_DimmingLevel, "DimmingLevel", "37.5");
  const std::string plain = QtSts::WriteDocument(status_);
  EXPECT_THAT(plain, testing::HasSubstr("37.5"));
  const CommaLocale comma;
  EXPECT_EQ(QtSts::WriteDocument(status_), plain);
}

}  // namespace
