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

  // As Parking::Missing.
  const Unwritten& Missing() const { return parking_.Missing(); }

  // Of the rows of the last cycle those, by their place, whose word is not known; after EndCycle.
  const std::vector<std::size_t>& UnknownWords() const { return unknown_words_; }

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
    bool HasNumber = false;  // its key has one that is digits alone, and fits
    bool IsFirstWidth = true;
  };
  // What made the elements of one list.
  struct Owners {
    std::vector<std::size_t> Rows;         // that completed them, by position
    std::optional<std::uint32_t> Highest;  // of their numbers
  };
  // An element that is lost, since its position is taken.
  struct Lost {
    std::size_t Row;
    std::string_view Entry;
    std::uint32_t Number;
    std::size_t Attribute;  // where it begins in the key
    std::string Owner;      // the key that completed the element at its position; "" when not known
    bool ComesLate;         // an element with this number, or a higher one, came before
  };

  Row& Current() { return rows_.back(); }
  void Begin(const observe::RowBegins& begins);
  void See(const observe::Stores& store);
  void SeeKeyNumber(const observe::Stores& store);
  // That the row is taken for; null when there is none.
  const rows::Attribute* KnownAttribute() const;
  void RemarkNoAttribute(bool is_part);
  void SeeKept(const observe::Stores& store);
  void SeeStored(const observe::Stores& store);
  void StoreInField(const observe::Stores& store);
  void See(const observe::Record& record);
  void SeeElement(const observe::Record& record, Element* element);
  void SeeRefused(const observe::Record& record);
  void SeeTaken(const observe::Record& record);
  void RemarkTaken(const Lost& lost);
  std::string WhyTaken(const Lost& lost);
  void End();

  const QtSts::CStatus* status_ = nullptr;
  std::vector<Row> rows_;
  std::size_t last_count_ = 0;  // of the cycle before
  Handled handled_;
  Shadow shadow_;
  Parking parking_;
  std::map<std::string_view, FamilyNumbers> numbers_;  // by the entry of the key table
  std::map<const void*, std::size_t> field_rows_;      // the last row of each field of the document
  // Of each list: of the display interface at this position.
  std::map<std::pair<observe::Place, int>, Owners> owners_;
  std::vector<Lost> lost_;
  std::vector<std::size_t> unknown_words_;
};

}  // namespace insight
