// A writer of rows: the collector sees all of a change or none, since it is one transaction.
#include <sqlite3.h>

#include <cstdio>

// Numbers are padded to one width: they are positions, and '0' sorts before '_', so that sensor 10
// would be read before sensor 1. Rows are read by key in byte order, whatever order they were
// written in; a sensor's "Type" sorts after its other attributes and completes it.
constexpr char kRows[] =
    "BEGIN IMMEDIATE;"
    "REPLACE INTO status VALUES ('DimmingMode', 'manual'), ('DimmingLevel', '62.5'),"
    " ('Sensor_00_Location', 'Local_CAN'), ('Sensor_00_Address', '17'),"
    " ('Sensor_00_Connected', 'true'), ('Sensor_00_Celsius', '31.5'),"
    " ('Sensor_00_Type', 'CANTemp');"
    "COMMIT;";

int main() {
  sqlite3* db = nullptr;
  int code = sqlite3_open_v2("/dev/shm/status.db", &db, SQLITE_OPEN_READWRITE, nullptr);
  if (code == SQLITE_OK) {
    sqlite3_busy_timeout(db, 2000);  // milliseconds; other writers have their turns
    code = sqlite3_exec(db, kRows, nullptr, nullptr, nullptr);
  }
  if (code != SQLITE_OK) {
    std::fprintf(stderr, "write_rows: %s\n", sqlite3_errmsg(db));
  }
  sqlite3_close(db);  // rolls an unfinished transaction back
  return code == SQLITE_OK ? 0 : 1;
}
