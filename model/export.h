// What libstatus exports; everything else in it stays hidden.
#pragma once

#if __cplusplus <= 201703L
#error "the headers of the status collector need C++20"
#endif

#define STATUS_API __attribute__((visibility("default")))
