// The server on a controller in a box that has no more memory.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "tests/serve/demo.h"
#include "tests/serve/server.h"

namespace {

using test_serve::Eventually;
using test_serve::Get;

bool IsHealthy() { return Get("/healthz").Status == 200; }

class ServeWithoutMemory : public test_serve::OnTheDemo {};

// It used to end the process.
TEST_F(ServeWithoutMemory, FailsTheCycleWhoseLinesAreTooMany) {
  test_serve::Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  constexpr rlim_t kBytes = rlim_t{1} << 30;
  const rlimit least = {kBytes, kBytes};
  ASSERT_EQ(prlimit(server.Process(), RLIMIT_AS, &least, nullptr), 0);
  // What the probes print is kept in this file until the cycle is over.
  const std::string printed = "/.proc/" + std::to_string(server.Process()) + "/fd/1";
  ASSERT_EQ(truncate(printed.c_str(), off_t{1} << 33), 0);
  EXPECT_TRUE(Eventually([] { return Get("/healthz").Body.starts_with("failed: out of memory;"); }))
      << Get("/healthz").Body;
  while (!IsHealthy()) {
    ASSERT_NE(Get("/healthz").Status, 0) << server.Errors();
    static_cast<void>(truncate(printed.c_str(), 0));
  }
  EXPECT_EQ(server.End(SIGTERM), 0);
}

}  // namespace
