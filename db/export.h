// What libsqlitedb exports; everything else in it stays hidden.
#pragma once

#define SQLITEDB_API __attribute__((visibility("default")))
