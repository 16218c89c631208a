// The document as JSON, for programs.
#pragma once

#include <string>
#include <vector>

#include "insight/snapshot.h"
#include "model/tree.h"

namespace host {

// The tree as indented JSON (RFC 8259, UTF-8) with the schema's types. A record is an object: its
// values, then its records and lists. A list is an array of objects, each with its class name as
// first member "Class". Numbers are numbers in their shortest form, except that not-a-number and
// the infinities are the strings "NaN", "INF" and "-INF"; lists of numbers are arrays; what is not
// reported has no member.
std::string RenderJson(const QtSts::DocumentTree& document);

// The same of the snapshot's document, with one more member of the root, the last: "Insight", an
// object with what docs/host.md lists.
std::string RenderJson(const insight::Snapshot& snapshot);

// That object alone: "Insight", and "Differing" with the keys of the rows that became something
// else than in the cycle before.
std::string RenderInsightJson(const insight::Snapshot& snapshot,
                              const std::vector<std::string>& differing);

}  // namespace host
