// What libstatus shows to its users; everything else in it stays hidden.
#pragma once

#define STATUS_API __attribute__((visibility("default")))
