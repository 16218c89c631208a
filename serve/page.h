// The page at "/", with what it loads: the files of page/, in the program.
#pragma once

namespace serve {

extern const char* const kPageHtml;
extern const char* const kPageCss;
extern const char* const kPageJs;
extern const char* const kCurvesJs;
extern const char* const kElementsJs;
extern const char* const kIcon;

}  // namespace serve
