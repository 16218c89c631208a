// A user of the database layer: needs libsqlitedb only.
#include <db/sql_database.h>

int main(int argc, char** argv) {
  CSQLdatabase database;
  if (argc < 2 || database.OpenDatabaseWrite(argv[1], 0, 0) != 0 ||
      database.CreateTable("status", 100) != 0) {
    return 1;
  }
  return database.CloseDatabase();
}
