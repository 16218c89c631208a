#include "insight/source_database.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "handlers/fields.h"
#include "insight/source_table.h"
#include "model/document.h"
#include "model/field_access.h"

namespace insight {
namespace {

using QtSts::ClassInfo;
using QtSts::COutput;
using QtSts::CStatus;
using QtSts::Field;

// The path from an object to the value at this address in it; "" when there is none.
std::string PathOf(const ClassInfo& info, void* object, const void* address) {
  std::string path;
  QtSts::FieldAccess::Visit(info, object, [&](const Field& field, void* part) {
    if (field.Elements != nullptr) {
      return true;
    }
    const void* const value = QtSts::FieldAccess::Read(field, part);
    if (field.Scalar != nullptr) {
      path = value == address ? field.Name : "";
    } else if (value != nullptr) {
      const std::string rest = PathOf(*field.Record, const_cast<void*>(value), address);
      path = rest.empty() ? "" : std::string(field.Name) + '/' + rest;
    }
    return path.empty();
  });
  return path;
}

// A field of the document's own, or of output 0, that rows are stored in.
struct RowField {
  std::string Path;
  bool AddsBits;
};

// By their distance from the beginning of the object that holds them.
struct RowFields {
  std::map<std::ptrdiff_t, RowField> Root;
  std::map<std::ptrdiff_t, RowField> Output;
};

std::ptrdiff_t Distance(const void* from, const void* to) {
  return static_cast<const char*>(to) - static_cast<const char*>(from);
}

template <class Owner>
void AddFields(std::span<const rows::Field<Owner>> table, const std::string& above,
               std::map<std::ptrdiff_t, RowField>* fields) {
  Owner object;
  for (const rows::Field<Owner>& field : table) {
    const void* const address = field.Of(object);
    fields->insert(
        {Distance(&object, address),
         {above + PathOf(Owner::Class, &object, address), field.Is == rows::Type::kBits}});
  }
}

const RowFields& FieldsOfRows() {
  static const RowFields fields = [] {
    RowFields all;
    AddFields<CStatus>(handlers::RootFields(), "", &all.Root);
    AddFields<COutput>(handlers::OutputFields(), "Outputs[0]/", &all.Output);
    AddFields<COutput>(handlers::TtableFields(), "Outputs[0]/", &all.Output);
    return all;
  }();
  return fields;
}

// The lists whose elements come from rows.
constexpr const char* kLists[] = {"Sensors", "DCIO/Devices", "Outputs[0]/DisplayInterfaces",
                                  "Outputs[0]/Devices"};

SourceState StateOf(int code, int error) {
  if (error == ENOENT || error == ENOTDIR) {
    return SourceState::kMissing;
  }
  if (error == EACCES || error == EPERM) {
    return SourceState::kDenied;
  }
  switch (code) {
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_READONLY:
      return SourceState::kDenied;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return SourceState::kLocked;
    case SQLITE_ERROR:  // no table, or another one
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return SourceState::kMalformed;
    default:
      return SourceState::kFailed;
  }
}

}  // namespace

bool RowsAddBits(std::string_view field) {
  return std::ranges::any_of(FieldsOfRows().Output, [field](const auto& entry) {
    return entry.second.AddsBits && entry.second.Path == field;
  });
}

void DatabaseRecorder::BeginCycle() { *this = {}; }

void DatabaseRecorder::See(const observe::Event& event) {
  if (const auto* const stores = event.As<observe::Stores>()) {
    if (stores->What == observe::Fate::kStored || stores->What == observe::Fate::kOtherWord) {
      SeeStored(stores->Destination);
    }
  } else if (event.As<observe::RowBegins>() != nullptr) {
    ++rows_;
  } else if (const auto* const begins = event.As<observe::CycleBegins>()) {
    status_ = begins->Status;
  } else if (const auto* const asks = event.As<observe::AsksDatabase>()) {
    read_rows_ |= asks->At == observe::Stage::kRows;
  } else if (const auto* const fails = event.As<observe::DatabaseFails>()) {
    if (!failed_) {
      failed_ = true;
      failed_at_ = fails->At;
      code_ = fails->Code;
      error_ = fails->SystemError;
      message_ = fails->Message;
    }
  }
}

void DatabaseRecorder::SeeStored(const void* destination) {
  const auto remember = [&](const std::map<std::ptrdiff_t, RowField>& fields, const void* object) {
    const auto field = fields.find(Distance(object, destination));
    if (field != fields.end()) {
      written_.insert(field->second.Path);
    }
  };
  if (status_ != nullptr && destination != nullptr) {
    remember(FieldsOfRows().Root, status_);
    if (const COutput* const output = status_->Outputs[0]) {
      remember(FieldsOfRows().Output, output);
    }
  }
}

Source DatabaseRecorder::EndCycle() const {
  const SourceInfo& info = SourceNamed(kDatabaseId);
  Source source;
  source.Id = info.Id;
  source.Name = info.Name;
  source.Required = info.Required;
  const bool all_rows = read_rows_ && (!failed_ || failed_at_ == observe::Stage::kFinish ||
                                       failed_at_ == observe::Stage::kRelease);
  if (failed_) {
    source.State = StateOf(code_, error_);
    source.Error = error_;
    source.Reason = error_ == 0 ? message_ : strerrordesc_np(error_);
  } else if (!read_rows_) {
    source.State = SourceState::kFailed;
    source.Reason = "the statement of the cycle before failed at its end";
  } else if (rows_ == 0) {
    source.State = SourceState::kEmpty;
    source.Reason = "no rows";
  } else {
    source.State = SourceState::kOk;
  }

  for (const auto* const fields : {&FieldsOfRows().Root, &FieldsOfRows().Output}) {
    for (const auto& [distance, field] : *fields) {
      source.Fields.push_back(field.Path);
      // Without their row no bits are added, which the row's absence says.
      if (field.AddsBits ? !all_rows : !written_.contains(field.Path)) {
        source.Unfed.push_back(field.Path);
      }
    }
  }
  for (const char* const list : kLists) {
    source.Fields.emplace_back(list);
    if (!all_rows) {
      source.Unfed.emplace_back(list);
    }
  }
  return source;
}

}  // namespace insight
