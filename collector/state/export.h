// Marks what libstatuscollector exports; everything else in it is hidden.
#pragma once

#define COLLECTOR_API __attribute__((visibility("default")))
