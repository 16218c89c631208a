// What stood in document and scratch state before a row, so that its differences can be found.
// Private to this library.
//
// The fixed part (scalars of the document and of output 0, the scratch state) is kept and compared
// as it stands in memory; text is made of what differs only. Of lists the new elements at their end
// are looked at, so that the cost of a row does not grow with the rows before it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "collector/state/scratch.h"
#include "collector/state/store.h"
#include "insight/snapshot.h"
#include "model/document.h"

namespace insight {

class Shadow {
 public:
  // Keeps what stands in the document and in the scratch state now.
  void Begin(const QtSts::CStatus& status);

  // What has changed since the last call, or since Begin. Of the display interfaces the one at
  // `interface` alone may have new sensors; -1: none has.
  void Compare(int interface, std::vector<Change>* document, std::vector<Change>* scratch);

  // The field of the document at this address, with its value before and now; false when it is none
  // of the fixed part. To be asked before Compare.
  bool Find(const void* address, Change* field);

 private:
  // An object that is compared byte by byte, or a text.
  struct Watch {
    const void* Address;
    const QtSts::ScalarType* Type;
    std::size_t Size;    // 0 for a text
    std::size_t Offset;  // of the copy in Bytes; of a text, its position in Texts
    std::string Path;
  };
  // Neighbours in memory, which are compared at once.
  struct Run {
    const void* Address;
    std::size_t Size;
    std::size_t Offset;  // in Bytes
    std::size_t First;   // among the watches
    std::size_t Count;
  };
  struct Group {
    std::vector<Watch> Watches;
    std::vector<Run> Runs;
    std::vector<std::size_t> TextWatches;
    std::vector<unsigned char> Bytes;
    std::vector<std::string> Texts;

    void Clear();
    void Add(const void* address, const QtSts::ScalarType* type, std::string path);
    void Compare(std::vector<Change>* changes);
    void CompareOne(const Watch& watch, std::vector<Change>* changes);
    const Watch* Find(const void* address) const;
    bool IsSame(const Watch& watch) const;
    void Keep(const Watch& watch);
    std::string KeptText(const Watch& watch) const;
  };
  struct Tail {
    const QtSts::Field* Listed;
    const void* List;
    std::size_t Count;
    std::string Path;
  };

  void Walk(const QtSts::ClassInfo& info, const void* object, const std::string& path,
            Group* group);
  void Walk(const QtSts::CBaseStatus& object, const std::string& path, Group* group);
  void WatchOutputZero();
  void FindOutputZero();
  void WatchScratch();
  static void CompareTail(Tail* tail, std::vector<Change>* changes);
  void CompareTails(int interface, std::vector<Change>* changes);
  void CompareContainers(std::vector<Change>* changes);
  void CompareVoltages(const char* name, const std::vector<float>& now, std::vector<float>* before,
                       std::vector<Change>* changes);

  const QtSts::CStatus* status_ = nullptr;
  const QtSts::COutput* output_zero_ = nullptr;
  bool output_is_new_ = false;  // a row made it since the last comparison
  Group root_;
  Group output_;  // 0; empty without one
  Group scratch_;
  std::vector<Tail> tails_;
  std::vector<Tail> behind_interfaces_;  // by position of the interface
  decltype(FanRpms) fans_;
  decltype(f_Psrb_InputVoltages) input_voltages_;
  decltype(f_Psrb_OutputVoltages) output_voltages_;
  decltype(dcioInputs) inputs_;
  decltype(dcioOutputs) outputs_;
};

// The listing of a value of this type; null for a container's element that is none.
const QtSts::ScalarType* ScalarOf(rows::Type type);

// As the document writes it.
std::string Written(const QtSts::ScalarType& type, const void* value);

}  // namespace insight
