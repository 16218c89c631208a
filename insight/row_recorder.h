// Makes the list of rows out of a cycle's events. Private to this library.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "collector/observer.h"
#include "insight/row_keys.h"
#include "insight/row_parking.h"
#include "insight/row_shadow.h"
#include "insight/snapshot.h"

namespace insight {

class RowRecorder {
 public:
  RowRecorder();
  RowRecorder(const RowRecorder&) = delete;
  RowRecorder& operator=(const RowRecorder&) = delete;

  void BeginCycle(const QtSts::CStatus& status);
  void See(const observe::Event& event);

  // Once the cycle has ended; `document` is what came of it.
  std::vector<Row> EndCycle(const QtSts::DocumentTree& document);

 private:
  // What is known of the row that is being handled.
  struct Handled {
    std::string_view Entry;  // of the key table
    int EntryAt = -1;
    const char* Key = nullptr;          // as the handler has it
    std::size_t Attribute = 0;          // where it begins in the key
    const void* Destination = nullptr;  // of its first value
    int Interface = -1;                 // the display interface that gets a sensor
    bool HasEvents = false;
    std::size_t Width = 0;  // of the number in its key
    bool IsFirstWidth = true;
  };

  Row& Current() { return rows_.back(); }
  void Begin(const observe::RowBegins& begins);
  void See(const observe::Stores& store);
  void SeeKeyNumber(const observe::Stores& store);
  // That the row is taken for; null when there is none.
  const rows::Attribute* KnownAttribute() const;
  void SeeKept(const observe::Stores& store);
  void SeeStored(const observe::Stores& store);
  void StoreInField(const observe::Stores& store);
  void See(const observe::Record& record);
  void SeeElement(const observe::Record& record, Element* element);
  void SeeRefused(const observe::Record& record);
  void RemarkTaken(const observe::Record& record);
  void End();

  const QtSts::CStatus* status_ = nullptr;
  std::vector<Row> rows_;
  std::size_t last_count_ = 0;  // of the cycle before
  Handled handled_;
  Shadow shadow_;
  Parking parking_;
  Widths widths_;
  std::map<const void*, std::size_t> field_rows_;  // the last row of each field of the document
  // The rows that completed the elements of each list: of the display interface at this position.
  std::map<std::pair<observe::Place, int>, std::vector<std::size_t>> owners_;
};

}  // namespace insight
