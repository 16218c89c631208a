// What libstatus exports; everything else in it stays hidden.
#pragma once

#define STATUS_API __attribute__((visibility("default")))
