// Random rows of sensors for tests of what must hold whatever rows come.
#pragma once

#include <initializer_list>
#include <random>
#include <span>
#include <string>

#include "tests/sensors/sensor_test.h"

// Makes rows from a seed: valid and malformed ones, numbers at the boundaries, every attribute in
// several spellings. The same seed gives the same rows everywhere. None is longer than the status
// database takes.
class RowMaker {
 public:
  explicit RowMaker(unsigned seed) : random_(seed) {}

  Rows Make();

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  std::string Pick(std::initializer_list<const char*> texts);
  std::string Bytes(std::size_t longest);
  std::string Any(std::span<const rows::Attribute> attributes);
  std::string Spelt(std::string name);
  std::string Number();
  std::string PointName();
  std::string AttributeName();
  std::string TypeText();
  std::string Value();

  std::mt19937 random_;
};
