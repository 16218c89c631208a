#include "collector/key_table.h"

#include "collector/state/numbered_key.h"
#include "handlers/handlers.h"
#include "sensors/sensor_keys.h"

const std::array<StatusKey, kStatusKeyCount> status_primary_keys = {{
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
}};
