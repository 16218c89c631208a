// The kinds of DCIO devices and display interfaces: which variables of the scratch state become
// which of their members.
#pragma once

#include <memory>
#include <span>

#include "collector/state/codes.h"
#include "collector/state/elements.h"
#include "collector/state/export.h"
#include "model/dcio.h"
#include "model/outputs.h"

namespace elements {

// One kind of element. To add one: its class, its code, its row in a table of kinds.cpp.
template <class Code, class Element>
struct Kind {
  Code Is;
  const QtSts::ClassInfo* Class;
  std::span<const Taken> Takes;
  std::unique_ptr<Element> (*Make)();  // filled from the scratch state
};
using DcioKind = Kind<DcioType, QtSts::CDCIODevice>;
using InterfaceKind = Kind<AttachmentType, QtSts::CDisplayInterface>;

// Every kind in ascending order of code. The sensors of the other attachments stand behind no
// interface.
COLLECTOR_API std::span<const DcioKind> DcioKinds();
COLLECTOR_API std::span<const InterfaceKind> InterfaceKinds();

// The kind with this code; null when there is none.
const DcioKind* KindOf(DcioType type);
const InterfaceKind* KindOf(AttachmentType type);

}  // namespace elements
