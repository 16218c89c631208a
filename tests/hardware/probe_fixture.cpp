#include "tests/hardware/probe_fixture.h"

#include "hardware/rate_limit.h"
#include "sandbox/scenario.h"

std::string Padded(std::size_t size, const std::string& text) {
  return std::string(size, '.') + text;
}

ProbeTest::ProbeTest() {
  sandbox::Scenario().Folder("/tmp").Apply();
  probe_.m_pStatus = &status_;
}

ProbeTest::~ProbeTest() {
  rs.printed = 0;
  rs.missed = 0;
  rs.begin = 0;
}
