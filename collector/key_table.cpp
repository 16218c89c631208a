#include "collector/key_table.h"

#include <algorithm>
#include <string_view>

#include "collector/state/numbered_key.h"
#include "handlers/handlers.h"
#include "sensors/sensor_keys.h"

namespace {

struct Row {
  std::string_view Key;
  int (*Handler)(QtSts::CStatus* status, char* value, char* key);
};

constexpr Row kRows[] = {
    {"ActualDimmingLevel", Status_ActualDimmingLevel},
    {"CalculatedSunrise", Status_CalculatedSunInfo},
    {"CalculatedSunset", Status_CalculatedSunInfo},
    {"ContentLevelAvg", Status_ContentLevelAvg},
    {rows::kDcioPrefix, Status_DCIO},
    {"DimmingLevel", Status_DimmingLevel},
    {"DimmingMode", Status_DimmingMode},
    {"ErrorFlags", Status_ErrorFlags},
    {"FansEnabled", Status_FansEnabled},
    {"FansOverride", Status_FansOverride},
    {"GUID", Status_GUID},
    {"MdlsAmbientFailure", Status_MdlsAmbientFailure},
    {"MdlsAmbientOverride", Status_MdlsAmbientOverride},
    {"ProductFamily", Status_ProductFamily},
    {rows::kSensorPrefix, Status_Sensor},
    {"ThermalScaler", Status_ThermalScaler},
    {"TtableAuthor", Status_TtableAuthor},
    {"TtableColumns", Status_TtableColumns},
    {"TtableContract", Status_TtableContract},
    {"TtableDate", Status_TtableDate},
    {rows::kDevicePrefix, Status_TtableDevice},
    {"TtableED", Status_TtableED},
    {"TtableFaceCnt", Status_TTableFaceCount},
    {"TtableInterleaved", Status_TtableInterleaved},
    {"TtableModHeight", Status_TtableModHeight},
    {"TtableModWidth", Status_TtableModWidth},
    {"TtablePixelPitch", Status_TtablePixelPitch},
    {"TtableRefreshRate", Status_TtableRefreshRate},
    {"TtableRows", Status_TtableRows},
    {"TtableTask", Status_TtableTask},
    {"TtableTime", Status_TtableTime},
    {"TtableTitle", Status_TtableTitle},
};
static_assert(std::size(kRows) == kStatusKeyCount);  // the size of the exported table

// Each key is smaller than the next and does not begin it. A key that began a later one would begin
// its neighbour, too.
static_assert(std::ranges::adjacent_find(kRows, [](const Row& row, const Row& next) {
                return row.Key >= next.Key || next.Key.starts_with(row.Key);
              }) == std::end(kRows));

std::array<StatusKey, kStatusKeyCount> MakeKeys() {
  std::array<StatusKey, kStatusKeyCount> keys;
  std::ranges::transform(kRows, keys.begin(), [](const Row& row) {
    return StatusKey{std::string(row.Key), row.Handler};
  });
  return keys;
}

}  // namespace

const std::array<StatusKey, kStatusKeyCount> status_primary_keys = MakeKeys();
