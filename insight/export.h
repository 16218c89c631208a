// What libstatusinsight exports.
#pragma once

#define INSIGHT_API __attribute__((visibility("default")))
