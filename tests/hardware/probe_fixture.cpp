#include "tests/hardware/probe_fixture.h"

#include "hardware/rate_limit.h"
#include "sandbox/scenario.h"

std::string Padded(std::size_t size, const std::string& text) {
  return std::string(size, '.') + text;
}

ProbeTest::ProbeTest() {
  sandbox::Scenario().Folder("/tmp").Apply();
  m_Probe.m_pStatus = &m_Status;
}

ProbeTest::~ProbeTest() {
  rs.printed = 0;
  rs.missed = 0;
  rs.begin = 0;
}
