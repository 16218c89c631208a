// What libstatuscollector shows to its users; everything else in it stays hidden.
#pragma once

#define COLLECTOR_API __attribute__((visibility("default")))
