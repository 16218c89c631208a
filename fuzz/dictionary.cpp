// Prints a fuzz dictionary from the tables of the libraries, so that it is complete.
// usage: fuzz_dictionary rows|xml
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <string_view>

#include "collector/key_table.h"
#include "model/codes.h"
#include "model/listing.h"
#include "sensors/attributes.h"
#include "sensors/record_builder.h"

namespace {

std::set<std::string, std::less<>> g_words;

void Add(std::string_view word) { g_words.emplace(word); }

void AddCodes(const QtSts::CodeTable& codes) {
  for (const QtSts::Code& code : codes) {
    Add(code.Text);
  }
}

void AddRows() {
  for (const StatusKey& key : status_primary_keys) {
    Add(key.Key);
  }
  for (const auto attributes :
       {sensors::ExactAttributes(), sensors::PointFamilies(), sensors::AttributeFamilies()}) {
    for (const rows::Attribute& attribute : attributes) {
      Add("_" + std::string(attribute.Name));
    }
  }
  for (const sensors::SensorKind& kind : sensors::SensorKinds()) {
    Add(kind.Text);
  }
  for (const QtSts::CodeTable& codes :
       {QtSts::CodeTable(QtSts::kDimmingModes), QtSts::CodeTable(QtSts::kFansOverrides),
        QtSts::CodeTable(QtSts::kProductFamilies), QtSts::CodeTable(QtSts::kLockStates)}) {
    AddCodes(codes);
  }
  // Not in any table that the library exports.
  for (const char* word : {"Local_CAN", "TXR_CAN",      "SCBII_CAN",
                           "Local_I2C", "DoorSwitch",   "PowerMonitor",
                           "RunLED",    "GenericInput", "GenericOutput",
                           "_ErrCnt",   "_00_Type",     "_00_Index",
                           "_00_Label", "_00_State",    "_00_Rpm",
                           "_00_Volts", "true",         "\n=\n",
                           "\t",        "4294967296",   "-1",
                           "1e400"}) {
    Add(word);
  }
}

void AddXml() {
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    Add(info->Name);
    for (const QtSts::Field& field : info->OwnFields()) {
      Add(field.Name);
    }
  }
  for (const char* word : {"<", "/>", "</", "=\"", "\"", "<!--", "-->", "<![CDATA[", "]]>", "&lt;",
                           "&#x41;", "<?xml version=\"1.0\"?>", "<!DOCTYPE", "<!ENTITY"}) {
    Add(word);
  }
}

void Print(const std::string& word) {
  std::putchar('"');
  for (const char c : word) {
    std::printf("\\x%02X", static_cast<unsigned char>(c));
  }
  std::puts("\"");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  std::strcmp(argv[1], "rows") == 0 ? AddRows() : AddXml();
  for (const std::string& word : g_words) {
    Print(word);
  }
  return 0;
}
