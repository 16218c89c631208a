// libxml2 makes its own data without a lock. Stands alone: the first use in the process counts.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "model/document.h"
#include "model/xml.h"

namespace {

std::atomic<int> g_initialized = 0;
std::atomic<int> g_too_early = 0;

template <class Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// The library finds these before libxml2's own.
__attribute__((visibility("default"))) void xmlInitParser() {
  Next<void()>("xmlInitParser")();
  ++g_initialized;
}

// The first function that each use calls.
__attribute__((visibility("default"))) void xmlResetLastError() {
  g_too_early += g_initialized == 0 ? 1 : 0;
  Next<void()>("xmlResetLastError")();
}

namespace {

// helgrind reported races on libxml2's own data.
TEST(Threads, FindTheDataOfLibxml2MadeOnceBeforeTheyUseIt) {
  std::atomic<int> read = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&read] {
      QtSts::XmlError error;
      read += QtSts::ReadDocument(QtSts::WriteDocument(QtSts::CStatus()), &error) ? 1 : 0;
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(read, 4);
  EXPECT_EQ(g_too_early, 0);
  EXPECT_GE(g_initialized, 1);
}

}  // namespace
