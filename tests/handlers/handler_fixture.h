// What the tests of the row handlers share: an empty document and a fresh scratch state.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string_view>

#include "handlers/handlers.h"
#include "model/document.h"
#include "tests/collector/scratch_variables.h"

// A writable text in a buffer of exactly its size, so that sanitizers find a read beyond it.
class Text {
 public:
  Text(const char* text) {  // NOLINT(google-explicit-constructor): null stays null
    if (text != nullptr) {
      const std::string_view view = text;
      bytes_ = std::make_unique<char[]>(view.size() + 1);
      view.copy(bytes_.get(), view.size());
    }
  }

  char* Get() const { return bytes_.get(); }

 private:
  std::unique_ptr<char[]> bytes_;
};

class HandlerTest : public testing::Test {
 protected:
  HandlerTest() { ClearScratch(); }
  ~HandlerTest() override { ClearScratch(); }

  // Calls `handler` with the row's key and value and returns its result.
  int Row(int (*handler)(QtSts::CStatus*, char*, char*), const char* key, const char* value) {
    const Text key_text = key;
    const Text value_text = value;
    return handler(&status_, value_text.Get(), key_text.Get());
  }

  // Output 0, which must be there.
  QtSts::COutput& Output() {
    if (status_.Outputs[0] == nullptr) {
      ADD_FAILURE() << "there is no output 0";
      status_.Outputs.Add(new QtSts::CTravex6Output);
    }
    return *status_.Outputs[0];
  }

  QtSts::CStatus status_;
};
